#pragma once
#include "engine/PlayerHolder.h"
#include "platform/AudioPlayer.h"
#include "platform/MainQueue.h"

#include <memory>

namespace tunelark {

// Pauses a playing track when the default output device changes away from the one recorded at the
// last play start, and resumes it when that device is the default again. Main thread only.
class OutputDeviceWatch {
public:
    enum class PausedByDeviceChange { unknown, yes, no };

    OutputDeviceWatch(PlayerHolder& engine, OutputDevice& device) : engine_(engine), device_(device) {}

    // One look at the device; creates the engine on its first run.
    void check();
    // Runs check every 0.07 s until stop() or destruction.
    void start(MainQueue& queue);
    void stop() { timer_.reset(); }
    PausedByDeviceChange memory() const { return memory_; }

private:
    PlayerHolder& engine_;
    OutputDevice& device_;
    PausedByDeviceChange memory_ = PausedByDeviceChange::unknown;
    std::unique_ptr<RepeatingTimer> timer_;
};

}  // namespace tunelark
