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

OutputDeviceWatch::~OutputDeviceWatch() {
    // The device may outlive the watch; it must not call into it then.
    if (restsWhenSettled_) device_.callOnChange(nullptr);
}

// Fourteen looks a second cost fourteen wake-ups of the main loop, each a round of every source of the
// loop, for a check that can only act after the device or the recorded device has changed. A device that
// tells of its changes lets the timer rest in between; each change starts it again, so every change is
// still seen by a look within 0.07 s, as with a timer that never rests.
void OutputDeviceWatch::start(MainQueue& queue) {
    queue_ = &queue;
    restsWhenSettled_ = device_.callOnChange([this] { wake(); });
    wake();
}

void OutputDeviceWatch::wake() {
    if (queue_ != nullptr && !timer_) {
        timer_ = queue_->startRepeating(std::chrono::milliseconds(70), [this] { look(); });
    }
}

void OutputDeviceWatch::look() {
    check();
    if (restsWhenSettled_ && settled()) timer_.reset();
}

bool OutputDeviceWatch::settled() {
    const bool same = device_.defaultOutputDevice() == engine_.player().recordedOutputDevice();
    // The same device: only a yes still has a resume to do. Another: the one decision is made.
    return same ? memory_ == PausedByDeviceChange::unknown : memory_ != PausedByDeviceChange::unknown;
}

}  // namespace tunelark
