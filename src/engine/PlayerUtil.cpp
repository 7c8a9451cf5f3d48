#include "engine/PlayerUtil.h"

#include "engine/Speeds.h"
#include "engine/TimeText.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "platform/Console.h"
#include "platform/Localized.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <optional>

namespace tunelark {

namespace {

std::optional<std::size_t> indexOfPath(const Records<Mp3Entity>& list, const std::string& filePath) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] && list[i]->filePath == filePath) return i;
    }
    return std::nullopt;
}

const Records<Mp3Entity>* playList(const PageState& page) {
    return page.storedMp3Entities ? &*page.storedMp3Entities : nullptr;
}

// The item a step plays in cycle or sequence mode, from the current index i of n items; nothing when the
// step plays nothing. Cycle wraps at both ends; sequence ends after the last item and repeats the first
// on a step back from it. With no current item, next plays the first item in cycle mode only, and
// previous plays the last.
std::optional<std::size_t> steppedIndex(PlayMode mode, bool forward, std::optional<std::size_t> i, std::size_t n) {
    if (n == 0) return std::nullopt;
    const bool cycle = mode == PlayMode::cycle;
    if (forward) {
        if (i && *i + 1 < n) return *i + 1;
        return cycle ? std::optional<std::size_t>(0) : std::nullopt;
    }
    if (!i) return n - 1;
    if (*i > 0) return *i - 1;
    return cycle ? n - 1 : 0;
}

}  // namespace

std::string staleAudioAlertText(const Mp3Entity& entry) {
    return localized("You need to redo Add Operation for mp3:") + entry.fileName.value_or("") + " (" +
           entry.filePath.value_or("") + ")";
}

PlayerUtil::PlayerUtil(PlayerDeps deps, EngineSeams& seams)
    : deps_(std::move(deps)),
      seams_(seams),
      view_(deps_.mainVC),
      page_(deps_.mainVC.state()),
      lyricsLoader_(deps_, seams_),
      speedIdx_(kInitialSpeedIdx) {}

void PlayerUtil::loadLyrics() { lyricsLoader_.load(timeline_); }

void PlayerUtil::play() {
    recordOutputDevice();
    if (mp3Player_ && mp3Player_->isPlaying()) return;
    if (mp3Player_ && startPlayer()) {
        // A rate set on a paused player may not take; the started one is given it and told to play on.
        mp3Player_->setRate(rate());
        startPlayer();
        view_.setIsPlaying(true);
        loadLyrics();
        return;
    }
    bool stale = true;
    std::shared_ptr<Mp3Entity> candidate = openFromPlayList(stale);
    saveStore();
    startCandidate(candidate, stale);
    loadLyrics();
}

// With nothing current every entry is tried until one gives a player; after a current item, the
// entries after it are tried while they are stale, and the first that resolves is the candidate.
std::shared_ptr<Mp3Entity> PlayerUtil::openFromPlayList(bool& stale) {
    const Records<Mp3Entity>* stored = playList(page_);
    if (!stored) return nullptr;
    const Records<Mp3Entity> list = *stored;  // our own copy: opening posts and saves, never edits it
    const bool afterCurrent = !page_.playingFilePath.empty();
    std::size_t first = 0;
    if (afterCurrent) {
        if (auto current = indexOfPath(list, page_.playingFilePath)) {
            first = static_cast<std::size_t>(std::max<int>(0, list[*current]->no));  // no is 1-based
        }
    }
    std::shared_ptr<Mp3Entity> candidate;
    for (std::size_t i = first; i < list.size(); ++i) {
        if (!list[i]) continue;
        candidate = list[i];
        stale = openEntry(*candidate);
        if (mp3Player_ || (afterCurrent && !stale)) break;
    }
    return candidate;
}

void PlayerUtil::startCandidate(const std::shared_ptr<Mp3Entity>& candidate, bool stale) {
    if (candidate && !stale && mp3Player_) {
        armPlayer();
        if (startPlayer()) {
            reportStarted(*candidate, false);
            return;
        }
    }
    reportPlayFailed(candidate ? candidate->filePath.value_or("") : "");
}

void PlayerUtil::playItem(const std::string& filePath) {
    recordOutputDevice();
    if (page_.playingFilePath == filePath) {
        loadLyrics();
        if (mp3Player_) {
            mp3Player_->setRate(rate());
            startPlayer();
        }
        view_.setIsPlaying(true);
        return;
    }
    if (mp3Player_) mp3Player_->stop();
    replacePlayer(nullptr);
    page_.playingFilePath = filePath;
    view_.setIsPlaying(false);
    view_.setPlayingFilePath(filePath);
    loadLyrics();  // before the audio is opened
    const Records<Mp3Entity>* list = playList(page_);
    std::optional<std::size_t> index = list ? indexOfPath(*list, filePath) : std::nullopt;
    if (!index) return;
    std::shared_ptr<Mp3Entity> entry = (*list)[*index];
    bool stale = openEntry(*entry);
    saveStore();
    if (!stale && mp3Player_) {
        armPlayer();
        if (startPlayer()) {
            reportStarted(*entry, true);
            return;
        }
    }
    reportPlayItemFailed(*entry);
}

void PlayerUtil::pause() {
    if (mp3Player_) mp3Player_->pause();
    view_.setIsPlaying(false);
}

void PlayerUtil::playNext() { step(Step::next); }

void PlayerUtil::playPrevious() { step(Step::previous); }

void PlayerUtil::step(Step direction) {
    const Records<Mp3Entity>* list = playList(page_);
    if (!list) return;
    if (page_.playMode == PlayMode::random) {
        randomPick();
        return;
    }
    const auto current = indexOfPath(*list, page_.playingFilePath);
    const auto target = steppedIndex(page_.playMode, direction == Step::next, current, list->size());
    if (target) playItem((*list)[*target]->filePath.value_or(""));
}

void PlayerUtil::randomPick() {
    const Records<Mp3Entity>* list = playList(page_);
    if (!list || list->empty()) return;
    playItem((*list)[deps_.random() % list->size()]->filePath.value_or(""));
}

void PlayerUtil::endOfTrack() {
    view_.setIsPlaying(false);
    playNext();
}

void PlayerUtil::changeMode() {
    page_.playMode = playModeAfter(page_.playMode);
    view_.setMode();
}

void PlayerUtil::seekPercent(double percent) {
    if (!std::isfinite(percent) || !mp3Player_) return;
    AudioPlayer* player = mp3Player_.get();
    double duration = player->duration();
    if (!std::isfinite(duration) || duration <= 0) {
        consoleLine("Seek ignored: unusable duration " + std::to_string(duration));
        return;
    }
    pause();
    player->setPosition(std::clamp(percent / 10000.0 * duration, 0.0, duration));
    play();
}

void PlayerUtil::speedUp() { stepSpeed(+1); }

void PlayerUtil::speedDown() { stepSpeed(-1); }

void PlayerUtil::stepSpeed(int step) {
    const int next = speedIdx_ + step;
    if (next >= 0 && next < static_cast<int>(kSpeeds.size())) {
        speedIdx_ = next;
        if (mp3Player_ && mp3Player_->isPlaying()) {
            mp3Player_->pause();
            mp3Player_->setRate(rate());
            startPlayer();
            view_.setIsPlaying(true);
        } else if (mp3Player_) {
            mp3Player_->setRate(rate());
        }
    }
    view_.setSpeed(std::string(kSpeeds[static_cast<std::size_t>(speedIdx_)]));
}

void PlayerUtil::nextLyric() {
    std::lock_guard lock(timeline_.lock());
    if (!mp3Player_ || timeline_.timeLineArray.empty()) return;
    std::optional<std::size_t> later = timeline_.laterLine(mp3Player_->position());
    if (!later) return;  // the last line has begun
    std::size_t current = *later == 0 ? 0 : *later - 1;
    if (current + 1 >= timeline_.timeLineArray.size()) return;
    jumpTo(*mp3Player_, timeline_.timeLineArray[current + 1]);
}

void PlayerUtil::previousLyric() {
    std::lock_guard lock(timeline_.lock());
    if (!mp3Player_ || timeline_.timeLineArray.empty()) return;
    std::optional<std::size_t> later = timeline_.laterLine(mp3Player_->position());
    if (later == std::size_t{0}) return;
    std::size_t upcoming = later.value_or(timeline_.timeLineArray.size());
    if (upcoming < 2) return;
    // 0.08 s into the line before the current one.
    jumpTo(*mp3Player_, timeline_.timeLineArray[upcoming - 2] + 0.08);
}

void PlayerUtil::jumpTo(AudioPlayer& player, double position) {
    player.pause();
    player.setPosition(position);
    player.setRate(rate());
    startPlayer();
    view_.setIsPlaying(true);
}

float PlayerUtil::rate() const { return rateForSpeedIdx(speedIdx_); }

bool PlayerUtil::startPlayer() {
    if (!mp3Player_) return false;
    bool started = mp3Player_->play();
    if (started) endPending_ = true;
    return started;
}

void PlayerUtil::recordOutputDevice() {
    recordedOutputDevice_ = deps_.outputDevice.defaultOutputDevice();
    if (seams_.outputDeviceRecorded) seams_.outputDeviceRecorded();
}

bool PlayerUtil::openEntry(Mp3Entity& entry) {
    bool stale = true;
    if (entry.bookmark) {
        ResolvedBookmark resolved = resolveBookmark(*entry.bookmark);
        stale = resolved.stale;
        if (resolved.location && startAccessing(*resolved.location)) {
            replacePlayer(deps_.players.open(*resolved.location));
            stopAccessing(*resolved.location);
        }
    }
    if (stale) {
        deps_.queue.post([&dialogs = deps_.dialogs, text = staleAudioAlertText(entry)] { dialogs.alert(text); });
        entry.canNotUseNow = true;
    }
    return stale;
}

void PlayerUtil::reportPlayFailed(const std::string& filePath) {
    page_.isPlaying = false;
    page_.playingFilePath = filePath;
    view_.setPlayingFilePath(filePath);
    view_.setIsPlaying(false);
    view_.setCurrent("-1");
    view_.setDuration("-1");
    view_.setSliderCurrentValue(0);
    view_.setMainFileName("");
}

void PlayerUtil::reportPlayItemFailed(const Mp3Entity& entry) {
    page_.isPlaying = false;
    page_.playingFilePath = entry.filePath.value_or("");
    view_.setCurrent("-1");
    view_.setDuration("-1");
    view_.setPlayingFilePath(page_.playingFilePath);
    view_.setIsPlaying(false);
    view_.setSliderCurrentValue(0);
    view_.setMainFileName(displayName(entry.fileName.value_or("")));
}

void PlayerUtil::reportStarted(const Mp3Entity& entry, bool withSlider) {
    page_.isPlaying = true;
    page_.playingFilePath = entry.filePath.value_or("");
    view_.setIsPlaying(true);
    view_.setPlayingFilePath(page_.playingFilePath);
    view_.setCurrent("00:00");
    view_.setDuration(timeText(mp3Player_->duration()));
    if (withSlider) view_.setSliderCurrentValue(0);
    view_.setMainFileName(displayName(entry.fileName.value_or("")));
}

void PlayerUtil::armPlayer() {
    mp3Player_->setOnEnd([this, generation = generation_] { onPlayerEnded(generation); });
    mp3Player_->setOnError([this, generation = generation_](const std::string& message) {
        onPlayerFailed(generation, message);
    });
    mp3Player_->enableRate(true);
    mp3Player_->setRate(rate());
}

void PlayerUtil::replacePlayer(std::unique_ptr<AudioPlayer> player) {
    mp3Player_ = std::move(player);
    ++generation_;
    endPending_ = false;
}

void PlayerUtil::onPlayerEnded(std::uint64_t generation) {
    // A late end of a replaced player, or a second end of one start, must not skip a track.
    if (generation != generation_ || !endPending_) return;
    endPending_ = false;
    endOfTrack();
}

// An error mid-track leaves the item as a file that cannot be played does: current, without a player,
// reported not playable. No alert, and no step to the next item.
void PlayerUtil::onPlayerFailed(std::uint64_t generation, const std::string& message) {
    if (generation != generation_) return;  // a replaced player's error says nothing about this item
    consoleLine("Playback stopped: " + message);
    replacePlayer(nullptr);
    const Records<Mp3Entity>* list = playList(page_);
    std::optional<std::size_t> index = list ? indexOfPath(*list, page_.playingFilePath) : std::nullopt;
    Mp3Entity fromPath;
    fromPath.fileName = lastComponentDecoded(page_.playingFilePath);
    fromPath.filePath = page_.playingFilePath;
    reportPlayItemFailed(index ? *(*list)[*index] : fromPath);
}

void PlayerUtil::saveStore() {
    if (deps_.store.hasChanges()) deps_.store.saveChanges();
}

}  // namespace tunelark
