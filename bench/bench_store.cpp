// Store figures for a large play list: insert and save, fetch from a fresh store, change all and save.
#include "library/store/Store.h"
#include "fakes/FakeMainQueue.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>

using namespace tunelark;

int main() {
    constexpr int kEntries = 10000;
    const auto dir = std::filesystem::temp_directory_path() / ("tl-bench-store-" + std::to_string(::getpid()));
    std::filesystem::remove_all(dir);
    const std::string path = (dir / "Tunelark.sqlite").string();
    test::FakeMainQueue queue;  // the bench runs the queued save itself, as the main loop would
    auto start = std::chrono::steady_clock::now();
    auto lap = [&start](const char* format, auto... args) {
        const auto now = std::chrono::steady_clock::now();
        std::printf(format, args..., std::chrono::duration<double, std::milli>(now - start).count());
        start = std::chrono::steady_clock::now();
    };
    {
        Store store(path, queue);
        store.fetchMp3Entities();  // open outside the timing
        start = std::chrono::steady_clock::now();
        for (int i = 0; i < kEntries; ++i) {
            auto& entry = *store.insertMp3Entity();
            const std::string stem = "file:///home/user/Music/Artist%20" + std::to_string(i % 97) + "/Track%20" +
                                     std::to_string(i);
            entry.filePath = stem + ".mp3";
            entry.mainPathFileName = stem;
            entry.fileName = "Track " + std::to_string(i) + ".mp3";
            entry.duration = "00:00";
            entry.bookmark = Bytes(90, static_cast<std::uint8_t>(i));
            entry.no = static_cast<std::int16_t>(i + 1);
        }
        store.saveChanges();
        queue.drain();
        lap("insert and save %d audio entries: %.1f ms\n", kEntries);
    }
    Store store(path, queue);
    start = std::chrono::steady_clock::now();
    auto entries = store.fetchMp3Entities();
    lap("open and fetch %zu audio entries (fresh store): %.1f ms\n", entries ? entries->size() : 0);
    store.fetchMp3Entities();
    lap("fetch them again (same objects): %.1f ms\n");
    const bool unchanged = !store.hasChanges();
    lap("has changes with nothing changed (%s): %.2f ms\n", unchanged ? "false" : "true");
    for (auto& entry : *entries) entry->no = static_cast<std::int16_t>(kEntries - entry->no + 1);
    store.saveChanges();
    queue.drain();
    lap("change all and save: %.1f ms\n");
    std::filesystem::remove_all(dir);
    return 0;
}
