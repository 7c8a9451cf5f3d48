// Figures for adding a folder of 10,000 tracks: the walk, then all of it from the request to the saved store
// and the play-list message as the running program does it (the walk on its own thread, the main queue
// polling for its end on the real clock), and the play-list message alone. The files are empty: adding
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

using namespace tunelark;
using Clock = std::chrono::steady_clock;

int main() {
    // The program's console lines go to /dev/null; the figures to the real standard output.
    std::FILE* figures = fdopen(dup(STDOUT_FILENO), "w");
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    auto start = Clock::now();
    const auto lap = [&](const char* what, std::size_t count) {
        std::fprintf(figures, "%s (%zu): %.1f ms\n", what, count,
                     std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        start = Clock::now();
    };
    const auto dir = std::filesystem::temp_directory_path() / ("tl-bench-folder-" + std::to_string(::getpid()));
    const std::string music = (dir / "Music").string();
    for (int album = 0; album < 100; ++album) {
        const auto folder = dir / "Music" / ("Artist " + std::to_string(album % 10)) / std::to_string(album);
        std::filesystem::create_directories(folder);
        for (int track = 0; track < 100; ++track) {
            std::ofstream(folder / ("Track " + std::to_string(track) + ".mp3"));
            if (track % 10 == 0) std::ofstream(folder / ("Track " + std::to_string(track) + ".lrc"));
        }
    }
    PosixFileTree tree;
    WalkControl control;
    start = Clock::now();
    lap("walk, audio and lyric files", walkFolders(tree, {music}, control).paths.size());

    test::FakeMainQueue queue;
    test::FakeDialogs dialogs;
    test::FakeProgressIndicator progress;
    test::FakePageView page;
    PageState state;
    Store store((dir / "Tunelark.sqlite").string(), queue);
    MainVC view(queue, &page, state);
    PlayList playList(store, queue, view);
    bool sent = false;
    AddFiles add(store, dialogs, queue, [&] { playList.sendPlayList(); sent = true; }, tree, progress);
    store.fetchMp3Entities();  // open outside the timing
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
    lap("whole add of the folder, request to saved and sent, entries", store.fetchMp3Entities()->size());
    page.scripts.clear();
    playList.sendPlayList();
    lap("play-list load and message alone, bytes", page.scripts.empty() ? 0 : page.scripts.back().size());
    std::filesystem::remove_all(dir);
    return 0;
}
