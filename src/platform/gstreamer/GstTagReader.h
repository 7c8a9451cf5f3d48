#pragma once
#include "platform/TagReader.h"

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace tunelark {

// Reads tags with GStreamer's discoverer on a thread of its own, one file at a time and only once no newer
// request has come for a moment, and answers on GLib's default main context. Initialises GStreamer when
// needed, on that thread. Destroying it waits for a read under way, which takes at most about the limit.
class GstTagReader : public TagReader {
public:
    explicit GstTagReader(std::chrono::milliseconds limit = std::chrono::seconds(3));
    ~GstTagReader() override;
    GstTagReader(const GstTagReader&) = delete;
    GstTagReader& operator=(const GstTagReader&) = delete;

    void read(const std::string& path, std::function<void(TrackTags tags)> done) override;

    struct Shared;

private:
    std::shared_ptr<Shared> shared_;
    std::thread worker_;
};

}  // namespace tunelark
