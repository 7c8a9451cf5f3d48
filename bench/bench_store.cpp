// Store figures for a large play list: insert and save, fetch from a fresh store, change all and save.
#include "library/store/Store.h"

#include <chrono>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

using namespace tunelark;
using Clock = std::chrono::steady_clock;

constexpr int kEntries = 10000;

// The bench runs the queued save itself, as the main loop would.
class DrainedQueue : public MainQueue {
public:
    void post(std::function<void()> task) override {
        tasks_.push_back(std::move(task));
        ++posted_;
    }
    std::uint64_t postedCount() const override { return posted_; }
    std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds, std::function<void()>) override {
        return nullptr;
    }
    void drain() {
        while (!tasks_.empty()) {
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
        }
    }

private:
    std::deque<std::function<void()>> tasks_;
    std::uint64_t posted_ = 0;
};

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void fillEntry(Mp3Entity& entry, int i) {
    const std::string stem = "file:///home/user/Music/Artist%20" + std::to_string(i % 97) + "/Track%20" +
                             std::to_string(i);
    entry.filePath = stem + ".mp3";
    entry.mainPathFileName = stem;
    entry.fileName = "Track " + std::to_string(i) + ".mp3";
    entry.duration = "00:00";
    entry.bookmark = Bytes(90, static_cast<std::uint8_t>(i));
    entry.no = static_cast<std::int16_t>(i + 1);
}

}  // namespace

int main() {
    const auto dir = std::filesystem::temp_directory_path() / ("tl-bench-store-" + std::to_string(::getpid()));
    std::filesystem::remove_all(dir);
    const std::string path = (dir / "Tunelark.sqlite").string();
    DrainedQueue queue;
    {
        Store store(path, queue);
        store.fetchMp3Entities();  // open outside the timing
        auto start = Clock::now();
        for (int i = 0; i < kEntries; ++i) fillEntry(*store.insertMp3Entity(), i);
        store.saveChanges();
        queue.drain();
        std::printf("insert and save %d audio entries: %.1f ms\n", kEntries, millisecondsSince(start));
    }
    Store store(path, queue);
    auto start = Clock::now();
    auto entries = store.fetchMp3Entities();
    std::printf("open and fetch %zu audio entries (fresh store): %.1f ms\n", entries ? entries->size() : 0,
                millisecondsSince(start));
    start = Clock::now();
    auto again = store.fetchMp3Entities();
    std::printf("fetch them again (same objects): %.1f ms\n", millisecondsSince(start));
    start = Clock::now();
    const bool unchanged = !store.hasChanges();
    std::printf("has changes with nothing changed (%s): %.2f ms\n", unchanged ? "false" : "true",
                millisecondsSince(start));
    start = Clock::now();
    for (auto& entry : *entries) entry->no = static_cast<std::int16_t>(kEntries - entry->no + 1);
    store.saveChanges();
    queue.drain();
    std::printf("change all and save: %.1f ms\n", millisecondsSince(start));
    std::filesystem::remove_all(dir);
    return 0;
}
