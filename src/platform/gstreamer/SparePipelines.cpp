#include "platform/gstreamer/SparePipelines.h"

#include <memory>
#include <utility>

namespace tunelark {

struct SparePipelines::Settling {
    SparePipeline pipeline;
    std::shared_ptr<SparePipelines> pool;
};

std::optional<SparePipeline> SparePipelines::take() {
    std::lock_guard lock(mutex_);
    return std::exchange(ready_, std::nullopt);
}

void SparePipelines::settle(SparePipeline pipeline, std::shared_ptr<SparePipelines> self) {
    GstElement* element = pipeline.pipeline.get();
    gst_element_call_async(element, &SparePipelines::settleAway, new Settling{std::move(pipeline), std::move(self)},
                           [](gpointer data) { delete static_cast<Settling*>(data); });
}

void SparePipelines::settleAway(GstElement*, gpointer data) noexcept {
    auto& settling = *static_cast<Settling*>(data);
    SparePipeline& spare = settling.pipeline;
    // A pipeline that cannot get to READY goes down with the closure.
    if (gst_element_set_state(spare.pipeline.get(), GST_STATE_READY) == GST_STATE_CHANGE_FAILURE) return;
    // What the bus still holds belongs to the dropped track.
    gst_bus_set_flushing(spare.bus.get(), TRUE);
    gst_bus_set_flushing(spare.bus.get(), FALSE);
    std::lock_guard lock(settling.pool->mutex_);
    if (!settling.pool->ready_) settling.pool->ready_.emplace(std::move(spare));
}

}  // namespace tunelark
