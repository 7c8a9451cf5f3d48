// Figures for adding a folder of 10,000 tracks: the walk, the store step, the save, the play-list load
// and message, and all of it from the request to the message as the running program does it (the walk
// on its own thread, the main queue polling for its end on the real clock). The files are empty: adding
// records only paths and bookmarks.
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"
#include "fakes/FakeProgressIndicator.h"
#include "library/AddFiles.h"
#include "library/FolderWalk.h"
#include "library/PlayList.h"
#include "page/MainVC.h"
#include "platform/PosixFileTree.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using namespace tunelark;
using Clock = std::chrono::steady_clock;

constexpr int kAlbums = 100;
constexpr int kTracks = 100;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

}  // namespace

int main() {
    // The program's console lines go to /dev/null; the figures to the real standard output.
    std::FILE* figures = fdopen(dup(STDOUT_FILENO), "w");
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);

    const auto dir = std::filesystem::temp_directory_path() / ("tl-bench-folder-" + std::to_string(::getpid()));
    const std::string music = (dir / "Music").string();
    auto start = Clock::now();
    for (int album = 0; album < kAlbums; ++album) {
        const auto folder = dir / "Music" / ("Artist " + std::to_string(album % 10)) / ("Album " + std::to_string(album));
        std::filesystem::create_directories(folder);
        for (int track = 0; track < kTracks; ++track) {
            std::ofstream(folder / ("Track " + std::to_string(track) + ".mp3"));
            if (track % 10 == 0) std::ofstream(folder / ("Track " + std::to_string(track) + ".lrc"));
        }
    }
    std::fprintf(figures, "made %d empty tracks and %d lyric files: %.1f ms\n", kAlbums * kTracks,
                 kAlbums * kTracks / 10, millisecondsSince(start));

    PosixFileTree tree;
    WalkControl control;
    start = Clock::now();
    const auto walked = walkFolders(tree, {music}, control);
    std::fprintf(figures, "walk (%zu files): %.1f ms\n", walked.paths.size(), millisecondsSince(start));

    test::FakeMainQueue queue;
    test::FakeDialogs dialogs;
    test::FakeProgressIndicator progress;
    test::FakePageView page;
    const auto pageBytes = [&page] {
        std::size_t bytes = 0;
        for (const auto& script : page.scripts) bytes += script.size();
        return bytes;
    };
    PageState state;
    {
        Store store((dir / "steps.sqlite").string(), queue);
        MainVC view(queue, &page, state);
        PlayList playList(store, queue, view);
        AddFiles add(store, dialogs, queue, [] {}, tree, progress);
        store.fetchMp3Entities();  // open outside the timing
        start = Clock::now();
        add.addPaths(walked.paths);
        std::fprintf(figures, "store step, new entries: %.1f ms\n", millisecondsSince(start));
        start = Clock::now();
        store.saveNow();
        std::fprintf(figures, "save: %.1f ms\n", millisecondsSince(start));
        start = Clock::now();
        playList.sendPlayList();
        std::fprintf(figures, "play-list load and message (%zu bytes): %.1f ms\n", pageBytes(), millisecondsSince(start));
        start = Clock::now();
        add.addPaths(walked.paths);
        store.saveNow();
        std::fprintf(figures, "store step and save, all entries known: %.1f ms\n", millisecondsSince(start));
    }
    Store store((dir / "whole.sqlite").string(), queue);
    MainVC view(queue, &page, state);
    PlayList playList(store, queue, view);
    bool sent = false;
    AddFiles add(store, dialogs, queue, [&] { playList.sendPlayList(); sent = true; }, tree, progress);
    store.fetchMp3Entities();
    start = Clock::now();
    add.add({music});
    // The queue's clock follows the real one, so that its timers fire as the main loop's would.
    for (auto ticked = start; !sent || store.hasChanges();) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        const auto due = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - ticked);
        queue.drain();
        queue.advance(due);
        ticked += due;
    }
    std::fprintf(figures, "whole add of the folder, request to saved and sent (%zu entries): %.1f ms%s\n",
                 store.fetchMp3Entities()->size(), millisecondsSince(start),
                 !progress.texts.empty() ? ", progress shown" : "");
    std::filesystem::remove_all(dir);
    return 0;
}
