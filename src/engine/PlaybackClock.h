#pragma once
#include "engine/PlayerUtil.h"

namespace tunelark {

// The 0.1 s tick that reports the position, the slider and the lyric line of the loaded track. Main
// thread only; the tick holds the timeline lock, so it must not run while the lock is held.
class PlaybackClock {
public:
    explicit PlaybackClock(PlayerUtil& player) : player_(player), view_(player.deps().mainVC) {}

    void tick();

private:
    void reportSlider(double position, double duration);
    void postLyricText(std::string text);

    PlayerUtil& player_;
    MainVC& view_;
    // The player whose unusable duration was reported, so the console gets one line per track.
    const AudioPlayer* badDurationReported_ = nullptr;
};

}  // namespace tunelark
