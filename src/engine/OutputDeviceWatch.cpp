#include "engine/OutputDeviceWatch.h"

#include <chrono>

namespace tunelark {

void OutputDeviceWatch::check() {
    PlayerUtil& player = engine_.player();
    if (device_.defaultOutputDevice() != player.recordedOutputDevice()) {
        // One decision per change away: a second change (A to B to C) neither pauses nor resumes.
        if (memory_ != PausedByDeviceChange::unknown) return;
        AudioPlayer* track = player.mp3Player();
        if (track && track->isPlaying()) {
            player.pause();
            memory_ = PausedByDeviceChange::yes;
        } else {
            memory_ = PausedByDeviceChange::no;
        }
        return;
    }
    if (memory_ == PausedByDeviceChange::yes) player.play();
    memory_ = PausedByDeviceChange::unknown;
}

void OutputDeviceWatch::start(MainQueue& queue) {
    timer_ = queue.startRepeating(std::chrono::milliseconds(70), [this] { check(); });
}

}  // namespace tunelark
