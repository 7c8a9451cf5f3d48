#include "engine/PlaybackClock.h"

#include "engine/TimeText.h"
#include "platform/Console.h"

#include <mutex>

namespace tunelark {

void PlaybackClock::tick() {
    AudioPlayer* player = player_.mp3Player();
    if (!player) {
        view_.setCurrent("-1");
        return;
    }
    double position = player->position();
    view_.setCurrent(timeText(position));
    const auto& visible = player_.seams().mainWindowVisible;
    if (visible && visible()) reportSlider(position, player->duration());

    LrcTimeline& timeline = player_.timeline();
    std::lock_guard lock(timeline.lock());
    if (timeline.wordLineArray.empty()) {
        postLyricText("");
        return;
    }
    if (timeline.timeLineArray.empty()) return;
    std::optional<std::size_t> k = timeline.currentLine(position);
    if (!k || *k >= timeline.wordLineArray.size()) return;
    const int rows = view_.state().displayingRowNum;
    if (rows == 1) {
        postLyricText(timeline.lineText(*k));
    } else if (rows == 2) {
        postLyricText(*k == 0 ? timeline.lineText(0) : timeline.lineText(*k - 1) + "\n" + timeline.lineText(*k));
    }
}

void PlaybackClock::reportSlider(double position, double duration) {
    if (auto value = sliderValue(position, duration)) {
        view_.setSliderCurrentValue(*value);
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

}  // namespace tunelark
