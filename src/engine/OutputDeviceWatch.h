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
    ~OutputDeviceWatch();
    OutputDeviceWatch(const OutputDeviceWatch&) = delete;
    OutputDeviceWatch& operator=(const OutputDeviceWatch&) = delete;

    // One look at the device; creates the engine on its first run.
    void check();
    // Runs check every 0.07 s until stop() or destruction. With a device that tells of its changes the
    // timer rests while no look could do anything, until wake().
    void start(MainQueue& queue);
    void stop() {
        timer_.reset();
        queue_ = nullptr;
    }
    // The device or the recorded device changed: looks every 0.07 s again until that has been acted on.
    void wake();
    PausedByDeviceChange memory() const { return memory_; }
    // Whether the 0.07 s timer runs.
    bool looking() const { return timer_ != nullptr; }

private:
    void look();
    // Whether a look would change nothing until the device or the recorded device changes.
    bool settled();

    PlayerHolder& engine_;
    OutputDevice& device_;
    PausedByDeviceChange memory_ = PausedByDeviceChange::unknown;
    MainQueue* queue_ = nullptr;
    bool restsWhenSettled_ = false;
    std::unique_ptr<RepeatingTimer> timer_;
};

}  // namespace tunelark
