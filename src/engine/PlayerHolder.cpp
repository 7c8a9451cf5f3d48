#include "engine/PlayerHolder.h"

#include <chrono>

namespace tunelark {

PlayerUtil& PlayerHolder::player() {
    if (!player_) {
        player_ = std::make_unique<PlayerUtil>(deps_, seams_);
        clock_ = std::make_unique<PlaybackClock>(*player_);
        timer_ = deps_.queue.startRepeating(std::chrono::milliseconds(100), [clock = clock_.get()] { clock->tick(); });
    }
    return *player_;
}

PlaybackClock& PlayerHolder::clock() {
    player();
    return *clock_;
}

}  // namespace tunelark
