#pragma once
#include "engine/PlayerUtil.h"

#include <cstdint>
#include <string>

namespace tunelark {

// The 0.1 s tick that reports position, slider and lyric line, and the controls that act on the
// position and rate of the loaded track. Main thread only; the tick and the lyric jumps hold the
// timeline lock, so none of these may run while it is held.
class PlaybackClock {
public:
    explicit PlaybackClock(PlayerUtil& player) : player_(player) {}

    // timeIndicater
    void tick();
    // v: ten-thousandths of the duration as a whole decimal text; anything else is ignored.
    void seek(const std::string& v);
    // The same seek from a number already read.
    void seekPercent(double percent);
    void speedUp();
    void speedDown();
    void nextLyric();
    void previousLyric();

private:
    void reportSlider(double position, double duration);
    void postLyricText(std::string text);
    void stepSpeed(int step);
    // Pauses, moves to the position, restores the rate and plays, reporting that it plays.
    void jumpTo(AudioPlayer& player, double position);

    PlayerUtil& player_;
    // The player whose unusable duration was reported, so the console gets one line per track.
    const AudioPlayer* badDurationReported_ = nullptr;
};

}  // namespace tunelark
