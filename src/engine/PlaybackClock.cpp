#include "engine/PlaybackClock.h"

#include "bridge/MainVC.h"
#include "engine/PlaybackTexts.h"
#include "library/store/Settings.h"
#include "platform/Console.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace tunelark {

void PlaybackClock::tick() {
    MainVC* view = MainVC::shared;
    AudioPlayer* player = player_.mp3Player();
    if (!player) {
        if (view) view->setCurrent("-1");
        return;
    }
    double position = player->position();
    if (view) view->setCurrent(timeText(position));
    const auto& visible = player_.seams().mainWindowVisible;
    if (view && visible && visible()) reportSlider(position, player->duration());

    LrcTimeline& timeline = player_.timeline();
    std::lock_guard lock(timeline.lock());
    if (timeline.wordLineArray.empty()) {
        postLyricText("");
        return;
    }
    if (!player_.mp3Player() || timeline.timeLineArray.empty()) return;
    std::optional<std::size_t> k = timeline.currentLine(position);
    if (!k || *k >= timeline.wordLineArray.size() || !view) return;
    if (view->displayingRowNum == 1) {
        postLyricText(timeline.lineText(*k));
    } else if (view->displayingRowNum == 2) {
        postLyricText(*k == 0 ? timeline.lineText(0) : timeline.lineText(*k - 1) + "\n" + timeline.lineText(*k));
    }
}

void PlaybackClock::reportSlider(double position, double duration) {
    if (auto value = sliderValue(position, duration)) {
        MainVC::shared->setSliderCurrentValue(*value);
        return;
    }
    if (badDurationReported_ != player_.mp3Player()) {
        badDurationReported_ = player_.mp3Player();
        consoleLine("Slider not updated: unusable duration " + std::to_string(duration));
    }
}

void PlaybackClock::postLyricText(std::string text) {
    if (auto sink = player_.seams().setLyricText) {
        player_.deps().queue.post([sink = std::move(sink), text = std::move(text)] { sink(text); });
    }
}

void PlaybackClock::seek(const std::string& v) {
    std::optional<double> percent = parseWholeNumber(v);
    if (!percent || !std::isfinite(*percent)) {
        consoleLine("Seek ignored: not a number: " + v);
        return;
    }
    seekPercent(*percent);
}

void PlaybackClock::seekPercent(double percent) {
    if (!std::isfinite(percent)) return;
    AudioPlayer* player = player_.mp3Player();
    if (!player) return;
    double duration = player->duration();
    if (!std::isfinite(duration) || duration <= 0) {
        consoleLine("Seek ignored: unusable duration " + std::to_string(duration));
        return;
    }
    player_.pause();
    player->setPosition(std::clamp(percent / 10000.0 * duration, 0.0, duration));
    player_.play();
}

void PlaybackClock::speedUp() { stepSpeed(+1); }

void PlaybackClock::speedDown() { stepSpeed(-1); }

void PlaybackClock::stepSpeed(int step) {
    int next = player_.speedIdx() + step;
    if (next >= 0 && next < static_cast<int>(kSpeeds.size())) {
        player_.setSpeedIdx(next);
        if (AudioPlayer* player = player_.mp3Player()) {
            if (player->isPlaying()) {
                player->pause();
                player->setRate(player_.rate());
                player_.startPlayer();
                if (MainVC::shared) MainVC::shared->setIsPlaying(true);
            } else {
                player->setRate(player_.rate());
            }
        }
    }
    if (MainVC::shared) MainVC::shared->setSpeed(std::string(kSpeeds[static_cast<std::size_t>(player_.speedIdx())]));
}

void PlaybackClock::nextLyric() {
    LrcTimeline& timeline = player_.timeline();
    std::lock_guard lock(timeline.lock());
    AudioPlayer* player = player_.mp3Player();
    if (!player || timeline.timeLineArray.empty()) return;
    std::optional<std::size_t> later = timeline.laterLine(player->position());
    if (!later) return;  // the last line has begun
    std::size_t current = *later == 0 ? 0 : *later - 1;
    if (current + 1 >= timeline.timeLineArray.size()) return;
    jumpTo(*player, timeline.timeLineArray[current + 1]);
}

void PlaybackClock::previousLyric() {
    LrcTimeline& timeline = player_.timeline();
    std::lock_guard lock(timeline.lock());
    AudioPlayer* player = player_.mp3Player();
    if (!player || timeline.timeLineArray.empty()) return;
    std::optional<std::size_t> later = timeline.laterLine(player->position());
    if (later == std::size_t{0}) return;
    std::size_t upcoming = later.value_or(timeline.timeLineArray.size());
    if (upcoming < 2) return;
    // 0.08 s into the line before the current one.
    jumpTo(*player, timeline.timeLineArray[upcoming - 2] + 0.08);
}

void PlaybackClock::jumpTo(AudioPlayer& player, double position) {
    player.pause();
    player.setPosition(position);
    player.setRate(player_.rate());
    player_.startPlayer();
    if (MainVC::shared) MainVC::shared->setIsPlaying(true);
}

}  // namespace tunelark
