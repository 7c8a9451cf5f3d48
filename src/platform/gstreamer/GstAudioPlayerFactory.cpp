#include "platform/gstreamer/GstAudioPlayerFactory.h"

#include "platform/gstreamer/GstAudioPlayer.h"

#include <gst/gst.h>
#include <malloc.h>

namespace tunelark {

GstAudioPlayerFactory::GstAudioPlayerFactory(std::chrono::milliseconds prerollLimit) : prerollLimit_(prerollLimit) {}

std::unique_ptr<AudioPlayer> GstAudioPlayerFactory::open(const std::string& path) {
    initGstreamer();
    // A track's streaming threads free what they used in their own malloc arenas, which keep it; a
    // moment after the last change of track it goes back to the system.
    trim_.start(1000, &GstAudioPlayerFactory::trimMemory, this);
    return GstAudioPlayer::open(path, prerollLimit_, spare_);
}

gboolean GstAudioPlayerFactory::trimMemory(gpointer self) noexcept {
    static_cast<GstAudioPlayerFactory*>(self)->trim_.fired();
    malloc_trim(0);
    return G_SOURCE_REMOVE;
}

}  // namespace tunelark
