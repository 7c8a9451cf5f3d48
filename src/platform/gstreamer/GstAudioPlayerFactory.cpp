#include "platform/gstreamer/GstAudioPlayerFactory.h"

#include "platform/gstreamer/GstAudioPlayer.h"

#include <gst/gst.h>

namespace tunelark {

GstAudioPlayerFactory::GstAudioPlayerFactory(std::chrono::milliseconds prerollLimit) : prerollLimit_(prerollLimit) {
    if (!gst_is_initialized()) gst_init(nullptr, nullptr);
}

std::unique_ptr<AudioPlayer> GstAudioPlayerFactory::open(const std::string& path) {
    return GstAudioPlayer::open(path, prerollLimit_, spare_);
}

}  // namespace tunelark
