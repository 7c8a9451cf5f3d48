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
    const std::string path = (dir / "Tunelark.sqlite").string();
    test::FakeMainQueue queue;  // the bench runs the queued save itself, as the main loop would
    auto start = std::chrono::steady_clock::now();
    const auto lap = [&start](const char* what, std::size_t entries) {
        const auto now = std::chrono::steady_clock::now();
        const double ms = std::chrono::duration<double, std::milli>(now - start).count();
        std::printf("%s, %zu entries: %.1f ms\n", what, entries, ms);
        start = now;
    };
    {
        Store store(path, queue);
        store.fetchMp3Entities();  // open outside the timing
        start = std::chrono::steady_clock::now();
        for (int i = 0; i < kEntries; ++i) {
            auto& entry = *store.insertMp3Entity();
            const std::string stem = "file:///home/user/Music/" + std::to_string(i % 97) + "/Track%20" + std::to_string(i);
            entry = Mp3Entity{Bytes(90, std::uint8_t(i)), false, "00:00", "Track " + std::to_string(i) + ".mp3",
                              stem + ".mp3", stem, std::int16_t(i + 1)};
        }
        store.saveChanges();
        queue.drain();
        lap("insert and save", kEntries);
    }
    Store store(path, queue);
    start = std::chrono::steady_clock::now();
    auto entries = store.fetchMp3Entities().value_or(Records<Mp3Entity>{});
    lap("open and fetch from a fresh store", entries.size());
    for (auto& entry : entries) entry->no = std::int16_t(kEntries - entry->no + 1);
    store.saveChanges();
    queue.drain();
    lap("change all and save", entries.size());
    std::filesystem::remove_all(dir);
    return 0;
}
