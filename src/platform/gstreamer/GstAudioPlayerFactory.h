#pragma once
#include "platform/AudioPlayer.h"

#include <chrono>
#include <memory>
#include <string>

namespace tunelark {

// Opens tracks as GStreamer players; initialises GStreamer on first construction. Main thread only.
class GstAudioPlayerFactory : public AudioPlayerFactory {
public:
    // prerollLimit bounds the wait for a file to become ready (random bytes need about 0.3 s to refuse).
    explicit GstAudioPlayerFactory(std::chrono::milliseconds prerollLimit = std::chrono::seconds(3));

    std::unique_ptr<AudioPlayer> open(const std::string& path) override;

private:
    std::chrono::milliseconds prerollLimit_;
};

}  // namespace tunelark
