#include "engine/PlayerHolder.h"

#include <chrono>

namespace tunelark {

PlayerUtil& PlayerHolder::player() {
    if (!player_) {
        player_ = std::make_unique<PlayerUtil>(deps_, seams_);
        clock_ = std::make_unique<PlaybackClock>(*player_);
        timer_ = deps_.queue.startRepeating(std::chrono::milliseconds(100), [this] {
            clock_->tick();
            if (seams_.afterTick) seams_.afterTick();
        });
    }
    return *player_;
}

PlaybackClock& PlayerHolder::clock() {
    player();
    return *clock_;
}

}  // namespace tunelark
