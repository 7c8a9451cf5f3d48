#pragma once
#include "platform/gstreamer/GstHandles.h"

#include <mutex>
#include <optional>

namespace tunelark {

// Playbins kept in READY after their track was dropped, so that the next track skips building a pipeline
// and connecting to the sound server. A dropped pipeline is brought down to READY on a GStreamer thread,
// so the track that replaces it does not wait for that; one is kept, any other goes down to NULL there.
class SparePipelines {
public:
    // Main thread: a settled pipeline, if one is ready.
    std::optional<SparePipeline> take();
    // Main thread: the pipeline of a dropped track; the pool must outlive the call, so owners share it.
    void settle(SparePipeline pipeline, std::shared_ptr<SparePipelines> self);

private:
    struct Settling;
    static void settleAway(GstElement* element, gpointer data) noexcept;

    std::mutex mutex_;
    std::optional<SparePipeline> ready_;
};

}  // namespace tunelark
