#pragma once
#include "platform/TagReader.h"

#include <string>
#include <vector>

namespace tunelark::test {

// Keeps every request; the test answers them when and in the order it chooses, as the main loop would
// deliver a reader's results.
class FakeTagReader : public TagReader {
public:
    struct Request {
        std::string path;
        std::function<void(TrackTags)> done;
    };
    void read(const std::string& path, std::function<void(TrackTags tags)> done) override {
        requests.push_back({path, std::move(done)});
    }
    // Answers request `index` (each at most once).
    void answer(std::size_t index, TrackTags tags) {
        auto done = std::move(requests.at(index).done);
        if (done) done(std::move(tags));
    }
    std::vector<std::string> paths() const {
        std::vector<std::string> all;
        for (const auto& request : requests) all.push_back(request.path);
        return all;
    }

    std::vector<Request> requests;
};

}  // namespace tunelark::test
