#pragma once
#include "engine/EngineDeps.h"
#include "engine/PlaybackClock.h"
#include "engine/PlayerUtil.h"
#include "platform/MainQueue.h"

#include <memory>

namespace tunelark {

// Holds the one engine: created on its first use, when its 0.1 s clock starts; the clock runs until
// the holder goes. Main thread only.
class Engine {
public:
    explicit Engine(PlayerDeps deps) : deps_(std::move(deps)) {}
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    PlayerUtil& get();
    PlaybackClock& clock();
    bool created() const { return player_ != nullptr; }
    // Filled by the program as the windows appear; read by the engine at each use.
    EngineSeams& seams() { return seams_; }

private:
    PlayerDeps deps_;
    EngineSeams seams_;
    std::unique_ptr<PlayerUtil> player_;
    std::unique_ptr<PlaybackClock> clock_;
    std::unique_ptr<RepeatingTimer> timer_;  // last: stopped before the clock and player go
};

}  // namespace tunelark
