#pragma once
#include "platform/AudioPlayer.h"
#include "platform/gstreamer/SparePipelines.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tunelark {

// Opens tracks as GStreamer players; initialises GStreamer with the first track. Main thread only.
class GstAudioPlayerFactory : public AudioPlayerFactory {
public:
    // prerollLimit bounds the wait for a file to become ready (random bytes need about 0.3 s to refuse).
    explicit GstAudioPlayerFactory(std::chrono::milliseconds prerollLimit = std::chrono::seconds(3));

    std::unique_ptr<AudioPlayer> open(const std::string& path) override;

private:
    static gboolean trimMemory(gpointer) noexcept;

    std::chrono::milliseconds prerollLimit_;
    // Shared with the players, which leave their pipeline here when they go.
    std::shared_ptr<SparePipelines> spare_ = std::make_shared<SparePipelines>();
    OneShotTimeout trim_;
};

}  // namespace tunelark
