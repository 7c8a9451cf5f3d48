#pragma once
#include "platform/AudioPlayer.h"

#include <functional>
#include <memory>
#include <string>

namespace tunelark {

// Opens players through another factory and passes every call through, telling a listener when a
// player's position is set (a seek or a lyric jump, whoever asked) and when its transport may have
// changed. The listener runs inside the engine's operations, possibly with the timeline lock held: it
// may only take note and post. Main thread only.
class ObservedAudioPlayerFactory : public AudioPlayerFactory {
public:
    struct Listener {
        std::function<void()> positionSet;
        std::function<void()> transportChanged;
    };

    explicit ObservedAudioPlayerFactory(AudioPlayerFactory& inner);

    // For every player, also the ones opened before; an empty listener silences them.
    void setListener(Listener listener);
    std::unique_ptr<AudioPlayer> open(const std::string& path) override;

private:
    AudioPlayerFactory& inner_;
    std::shared_ptr<Listener> listener_;
};

}  // namespace tunelark
