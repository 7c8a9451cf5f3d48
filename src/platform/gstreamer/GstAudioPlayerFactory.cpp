#include "platform/gstreamer/GstAudioPlayerFactory.h"

#include "platform/gstreamer/GstAudioPlayer.h"

#include <gst/gst.h>

namespace tunelark {

GstAudioPlayerFactory::GstAudioPlayerFactory(std::chrono::milliseconds prerollLimit) : prerollLimit_(prerollLimit) {}

std::unique_ptr<AudioPlayer> GstAudioPlayerFactory::open(const std::string& path) {
    // Not at start-up: reading the plugin registry would delay the page, and most starts play later.
    if (!gst_is_initialized()) gst_init(nullptr, nullptr);
    return GstAudioPlayer::open(path, prerollLimit_, spare_);
}

}  // namespace tunelark
