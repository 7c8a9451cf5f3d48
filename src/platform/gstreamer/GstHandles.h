#pragma once
#include "platform/glib/GSourceHandles.h"
#include <gst/gst.h>

#include <memory>

namespace tunelark {

// Owns a pipeline; brings it down to NULL before the last reference goes, as GStreamer requires.
struct PipelineRelease {
    void operator()(GstElement* pipeline) const noexcept {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }
};
using PipelinePtr = std::unique_ptr<GstElement, PipelineRelease>;

struct GstObjectRelease {
    void operator()(gpointer object) const noexcept { gst_object_unref(object); }
};
using BusPtr = std::unique_ptr<GstBus, GstObjectRelease>;
using ElementPtr = std::unique_ptr<GstElement, GstObjectRelease>;

struct MessageRelease {
    void operator()(GstMessage* message) const noexcept { gst_message_unref(message); }
};
using MessagePtr = std::unique_ptr<GstMessage, MessageRelease>;

struct TagListRelease {
    void operator()(GstTagList* tags) const noexcept { gst_tag_list_unref(tags); }
};
using TagListPtr = std::unique_ptr<GstTagList, TagListRelease>;

struct SampleRelease {
    void operator()(GstSample* sample) const noexcept { gst_sample_unref(sample); }
};
using SamplePtr = std::unique_ptr<GstSample, SampleRelease>;

// A watch on a bus (a GSource on the default main context); removing it stops the callbacks at once.
class BusWatch {
public:
    BusWatch() = default;
    BusWatch(GstBus* bus, GstBusFunc callback, gpointer data) : source_(gst_bus_add_watch(bus, callback, data)) {}

    explicit operator bool() const { return bool(source_); }
    void reset() { source_.reset(); }

private:
    SourceId source_;
};

// GStreamer is set up with its first use rather than at start-up: reading the plugin registry would
// delay the page. Any thread.
inline void initGstreamer() {
    if (!gst_is_initialized()) gst_init(nullptr, nullptr);
}

// A playbin and its bus, kept for the next track once its own was dropped (SparePipelines).
struct SparePipeline {
    PipelinePtr pipeline;
    BusPtr bus;
};

}  // namespace tunelark
