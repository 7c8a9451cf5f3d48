#include "engine/PlayerUtil.h"

#include "bridge/MainVC.h"
#include "engine/PlaybackTexts.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "platform/Console.h"
#include "platform/Localized.h"

#include <algorithm>
#include <optional>

namespace tunelark {

namespace {

std::optional<std::size_t> indexOfPath(const Records<Mp3Entity>& list, const std::string& filePath) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] && list[i]->filePath == filePath) return i;
    }
    return std::nullopt;
}

const Records<Mp3Entity>* playList(const MainVC* view) {
    return view && view->storedMp3Entities ? &*view->storedMp3Entities : nullptr;
}

}  // namespace

std::string staleAudioAlertText(const Mp3Entity& entry) {
    return localized("You need to redo Add Operation for mp3:") + entry.fileName.value_or("") + " (" +
           entry.filePath.value_or("") + ")";
}

PlayerUtil::PlayerUtil(PlayerDeps deps, EngineSeams& seams)
    : deps_(std::move(deps)), seams_(seams), lyricsLoader_(deps_, seams_), speedIdx_(kInitialSpeedIdx) {}

void PlayerUtil::loadLyrics() { lyricsLoader_.load(timeline_); }

void PlayerUtil::play() {
    recordOutputDevice();
    MainVC* view = MainVC::shared;
    if (mp3Player_ && mp3Player_->isPlaying()) return;
    if (mp3Player_ && startPlayer()) {
        mp3Player_->setRate(rate());
        startPlayer();
        if (view) view->setIsPlaying(true);
        loadLyrics();
        return;
    }
    bool stale = true;
    std::shared_ptr<Mp3Entity> candidate = view ? openFromPlayList(*view, stale) : nullptr;
    saveStore();
    startCandidate(view, candidate, stale);
    loadLyrics();
}

// With nothing current every entry is tried until one gives a player; after a current item, the
// entries after it are tried while they are stale, and the first that resolves is the candidate.
std::shared_ptr<Mp3Entity> PlayerUtil::openFromPlayList(MainVC& view, bool& stale) {
    const Records<Mp3Entity>* stored = playList(&view);
    if (!stored) return nullptr;
    const Records<Mp3Entity> list = *stored;  // our own copy: opening posts and saves, never edits it
    const bool afterCurrent = !view.playingFilePath.empty();
    std::size_t first = 0;
    if (afterCurrent) {
        if (auto current = indexOfPath(list, view.playingFilePath)) {
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

void PlayerUtil::startCandidate(MainVC* view, const std::shared_ptr<Mp3Entity>& candidate, bool stale) {
    if (candidate && !stale && mp3Player_) {
        armPlayer();
        if (startPlayer()) {
            if (view) reportStarted(*view, *candidate, false);
            return;
        }
    }
    reportPlayFailed(view, candidate ? candidate->filePath.value_or("") : "");
}

void PlayerUtil::playItem(const std::string& filePath) {
    recordOutputDevice();
    MainVC* view = MainVC::shared;
    if (view && view->playingFilePath == filePath) {
        loadLyrics();
        if (mp3Player_) {
            mp3Player_->setRate(rate());
            startPlayer();
        }
        view->setIsPlaying(true);
        return;
    }
    if (mp3Player_) mp3Player_->stop();
    replacePlayer(nullptr);
    if (view) {
        view->playingFilePath = filePath;
        view->setIsPlaying(false);
        view->setPlayingFilePath(filePath);
    }
    loadLyrics();  // before the audio is opened
    const Records<Mp3Entity>* list = playList(view);
    std::optional<std::size_t> index = list ? indexOfPath(*list, filePath) : std::nullopt;
    if (!index) return;
    std::shared_ptr<Mp3Entity> entry = (*list)[*index];
    bool stale = openEntry(*entry);
    saveStore();
    if (!stale && mp3Player_) {
        armPlayer();
        if (startPlayer()) {
            reportStarted(*view, *entry, true);
            return;
        }
    }
    reportPlayItemFailed(*view, *entry);
}

void PlayerUtil::pause() {
    if (mp3Player_) mp3Player_->pause();
    if (MainVC* view = MainVC::shared) view->setIsPlaying(false);
}

void PlayerUtil::playNext() {
    MainVC* view = MainVC::shared;
    const Records<Mp3Entity>* list = playList(view);
    if (!list) return;
    const std::size_t n = list->size();
    std::optional<std::size_t> i = indexOfPath(*list, view->playingFilePath);
    std::size_t next = 0;
    if (view->playMode == "cycle") {
        if (n == 0) return;
        next = i && *i + 1 < n ? *i + 1 : 0;
    } else if (view->playMode == "sequence") {
        if (!i || *i + 1 >= n) return;
        next = *i + 1;
    } else {
        if (view->playMode == "random") randomPick();
        return;
    }
    playItem((*list)[next]->filePath.value_or(""));
}

void PlayerUtil::playPrevious() {
    MainVC* view = MainVC::shared;
    const Records<Mp3Entity>* list = playList(view);
    if (!list) return;
    const std::size_t n = list->size();
    std::optional<std::size_t> i = indexOfPath(*list, view->playingFilePath);
    std::size_t previous = 0;
    if (view->playMode == "cycle") {
        if (n == 0) return;
        previous = i && *i > 0 ? *i - 1 : n - 1;
    } else if (view->playMode == "sequence") {
        if (n == 0) return;
        previous = i ? (*i > 0 ? *i - 1 : 0) : n - 1;
    } else {
        if (view->playMode == "random") randomPick();
        return;
    }
    playItem((*list)[previous]->filePath.value_or(""));
}

void PlayerUtil::randomPick() {
    const Records<Mp3Entity>* list = playList(MainVC::shared);
    if (!list || list->empty()) return;
    playItem((*list)[deps_.random() % list->size()]->filePath.value_or(""));
}

void PlayerUtil::endOfTrack() {
    if (MainVC* view = MainVC::shared) view->setIsPlaying(false);
    playNext();
}

void PlayerUtil::changeMode() {
    MainVC* view = MainVC::shared;
    if (!view) return;
    if (auto index = playModeIndex(view->playMode)) {
        view->playMode = std::string(kPlayModes[(*index + 1) % kPlayModes.size()]);
    }
    view->setMode();
}

void PlayerUtil::setSpeedIdx(int index) { speedIdx_ = std::clamp(index, 0, static_cast<int>(kSpeeds.size()) - 1); }

float PlayerUtil::rate() const { return rateForSpeedIdx(speedIdx_); }

bool PlayerUtil::startPlayer() {
    if (!mp3Player_) return false;
    bool started = mp3Player_->play();
    if (started) endPending_ = true;
    return started;
}

void PlayerUtil::recordOutputDevice() { recordedOutputDevice_ = deps_.outputDevice.defaultOutputDevice(); }

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

void PlayerUtil::reportPlayFailed(MainVC* view, const std::string& filePath) {
    if (!view) return;
    view->isPlaying = false;
    view->playingFilePath = filePath;
    view->setPlayingFilePath(filePath);
    view->setIsPlaying(false);
    view->setCurrent("-1");
    view->setDuration("-1");
    view->setSliderCurrentValue(0);
    view->setMainFileName("");
}

void PlayerUtil::reportPlayItemFailed(MainVC& view, const Mp3Entity& entry) {
    view.isPlaying = false;
    view.playingFilePath = entry.filePath.value_or("");
    view.setCurrent("-1");
    view.setDuration("-1");
    view.setPlayingFilePath(view.playingFilePath);
    view.setIsPlaying(false);
    view.setSliderCurrentValue(0);
    view.setMainFileName(displayName(entry.fileName.value_or("")));
}

void PlayerUtil::reportStarted(MainVC& view, const Mp3Entity& entry, bool withSlider) {
    view.isPlaying = true;
    view.playingFilePath = entry.filePath.value_or("");
    view.setIsPlaying(true);
    view.setPlayingFilePath(view.playingFilePath);
    view.setCurrent("00:00");
    view.setDuration(timeText(mp3Player_->duration()));
    if (withSlider) view.setSliderCurrentValue(0);
    view.setMainFileName(displayName(entry.fileName.value_or("")));
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
    MainVC* view = MainVC::shared;
    if (!view) return;
    const Records<Mp3Entity>* list = playList(view);
    std::optional<std::size_t> index = list ? indexOfPath(*list, view->playingFilePath) : std::nullopt;
    Mp3Entity fromPath;
    fromPath.fileName = lastComponentDecoded(view->playingFilePath);
    fromPath.filePath = view->playingFilePath;
    reportPlayItemFailed(*view, index ? *(*list)[*index] : fromPath);
}

void PlayerUtil::saveStore() {
    if (deps_.store.hasChanges()) deps_.store.saveChanges();
}

}  // namespace tunelark
