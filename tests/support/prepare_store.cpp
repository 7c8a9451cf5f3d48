// tl-prepare-store: writes a play list into a store file exactly as the player's add-files operation
// does, so end-to-end tests and benchmarks can start the player with a list and no open panel.
//
//   tl-prepare-store STORE_PATH FILE...
//
// The player reads $XDG_DATA_HOME/Tunelark/Tunelark.sqlite. Files are added in one go, as if chosen
// together in the open panel: .mp3 and .lrc files pair by their path without the extension. The
// add-files console lines go to standard output; alerts go to standard error and make the exit status 1.
#include "library/AddFiles.h"
#include "library/store/Store.h"
#include "platform/Dialogs.h"
#include "platform/MainQueue.h"

#include <deque>
#include <filesystem>
#include <iostream>

namespace {

using namespace tunelark;

// Runs posted tasks when drained; the store queues its saves here.
class DrainedQueue : public MainQueue {
public:
    void post(std::function<void()> task) override { tasks_.push_back(std::move(task)); }
    std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds, std::function<void()>) override {
        return std::make_unique<RepeatingTimer>();  // nothing here repeats
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
};

// No one answers dialogs here: an alert means the list was not stored as asked.
class StderrDialogs : public Dialogs {
public:
    void alert(const std::string& message) override {
        std::cerr << "tl-prepare-store: " << message << '\n';
        alerted = true;
    }
    int ask(const std::string& message, const std::string&, const std::vector<std::string>&) override {
        alert(message);
        return -1;
    }
    bool presentError(const std::string& description) override {
        alert(description);
        return false;
    }
    std::optional<std::vector<std::string>> chooseFiles(const OpenPanelRequest&) override { return std::nullopt; }

    bool alerted = false;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: " << argv[0] << " STORE_PATH FILE...\n";
        return 2;
    }
    std::vector<std::string> paths;
    for (int i = 2; i < argc; ++i) {
        std::error_code error;
        auto path = std::filesystem::absolute(argv[i], error);
        if (error || !std::filesystem::is_regular_file(path)) {
            std::cerr << "tl-prepare-store: not a file: " << argv[i] << '\n';
            return 1;
        }
        paths.push_back(path.lexically_normal().string());
    }

    DrainedQueue queue;
    StderrDialogs dialogs;
    int status = 0;
    {
        Store store(argv[1], queue);
        AddFiles addFiles(store, dialogs, queue, [] {});
        if (!addFiles.addPaths(paths)) status = 1;
        queue.drain();
        if (auto error = store.saveNow()) {
            std::cerr << "tl-prepare-store: save failed: " << *error << '\n';
            status = 1;
        }
    }
    return dialogs.alerted ? 1 : status;
}
