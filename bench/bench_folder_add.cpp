// Figures for adding a folder of 10,000 tracks: the walk, the store step, the save, the play-list load
// and message, and all of it from the request to the message as the running program does it (the walk
// on its own thread, the main queue polling for its end). The files are empty: adding records only
// paths and bookmarks.
#include "library/AddFiles.h"
#include "library/FolderWalk.h"
#include "library/PlayList.h"
#include "page/MainVC.h"
#include "platform/PosixFileTree.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using namespace tunelark;
using Clock = std::chrono::steady_clock;

constexpr int kAlbums = 100;
constexpr int kTracks = 100;

// Tasks and timers on this thread, as the main loop runs them, with the real clock.
class LoopQueue : public MainQueue {
public:
    void post(std::function<void()> task) override {
        tasks_.push_back(std::move(task));
        ++posted_;
    }
    std::uint64_t postedCount() const override { return posted_; }
    std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds interval,
                                                   std::function<void()> action) override {
        timers_.push_back(std::make_shared<Timer>(Timer{interval, Clock::now() + interval, std::move(action), true}));
        return std::make_unique<Handle>(timers_.back());
    }
    void runOnce() {
        const auto now = Clock::now();
        for (std::size_t i = 0; i < timers_.size(); ++i) {
            auto timer = timers_[i];
            if (!timer->live || timer->next > now) continue;
            timer->next = now + timer->interval;
            timer->action();
        }
        while (!tasks_.empty()) {
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
        }
    }

private:
    struct Timer {
        std::chrono::milliseconds interval;
        Clock::time_point next;
        std::function<void()> action;
        bool live;
    };
    struct Handle : RepeatingTimer {
        explicit Handle(std::shared_ptr<Timer> t) : timer(std::move(t)) {}
        ~Handle() override { timer->live = false; }
        std::shared_ptr<Timer> timer;
    };
    std::deque<std::function<void()>> tasks_;
    std::uint64_t posted_ = 0;
    std::vector<std::shared_ptr<Timer>> timers_;
};

struct QuietDialogs : Dialogs {
    void alert(const std::string&) override {}
    int ask(const std::string&, const std::string&, const std::vector<std::string>&) override { return -1; }
    bool presentError(const std::string&) override { return false; }
    std::optional<std::vector<std::string>> chooseFiles(const OpenPanelRequest&) override { return std::nullopt; }
};

struct NoProgress : ProgressIndicator {
    void show(const std::string&, std::function<void()>) override { ++shows; }
    void hide() override {}
    int shows = 0;
};

struct CountingPage : PageView {
    void evaluate(const std::string& script) override { bytes += script.size(); }
    void setStyleOverride(const std::string&) override {}
    void registerHandler(const std::string&, MessageHandler) override {}
    std::size_t bytes = 0;
};

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

    LoopQueue queue;
    QuietDialogs dialogs;
    NoProgress progress;
    CountingPage page;
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
        std::fprintf(figures, "play-list load and message (%zu bytes): %.1f ms\n", page.bytes, millisecondsSince(start));
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
    while (!sent || store.hasChanges()) {
        queue.runOnce();
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    std::fprintf(figures, "whole add of the folder, request to saved and sent (%zu entries): %.1f ms%s\n",
                 store.fetchMp3Entities()->size(), millisecondsSince(start),
                 progress.shows ? ", progress shown" : "");
    std::filesystem::remove_all(dir);
    return 0;
}
