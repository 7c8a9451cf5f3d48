#pragma once
#include "engine/EngineDeps.h"
#include "engine/PlaybackClock.h"
#include "engine/PlayerUtil.h"
#include "platform/MainQueue.h"

#include <memory>

namespace tunelark {

// Holds the one PlayerUtil: created on its first use, when its 0.1 s clock starts; the clock runs
// until the holder goes. Main thread only.
class PlayerHolder {
public:
    explicit PlayerHolder(PlayerDeps deps) : deps_(std::move(deps)) {}
    PlayerHolder(const PlayerHolder&) = delete;
    PlayerHolder& operator=(const PlayerHolder&) = delete;

    // The player, created (and its clock started) when this is the first use.
    PlayerUtil& player();
    PlaybackClock& clock();
    bool created() const { return player_ != nullptr; }
    // Filled by the program as the windows appear; read by the player at each use.
    EngineSeams& seams() { return seams_; }

private:
    PlayerDeps deps_;
    EngineSeams seams_;
    std::unique_ptr<PlayerUtil> player_;
    std::unique_ptr<PlaybackClock> clock_;
    std::unique_ptr<RepeatingTimer> timer_;  // last: stopped before the clock and player go
};

}  // namespace tunelark
