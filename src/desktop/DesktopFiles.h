#pragma once
#include "bridge/BridgeOperations.h"
#include "library/AddFiles.h"
#include "page/PageState.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace tunelark {

// Files handed over by the desktop: named on the command line (also of a later launch), opened with the
// program, sent by the media-player interface, or dropped on the main window. They are added as the
// add operation adds the files chosen in its panel, without the alert and the panel. Until the page has
// shown the main window they wait, so the page receives the play list and the playing track. Main
// thread only.
class DesktopFiles {
public:
    static constexpr std::chrono::milliseconds kReadyPoll{100};

    DesktopFiles(MainQueue& queue, const PageState& page, AddFiles& addFiles, const BridgeOperations& operations);
    DesktopFiles(const DesktopFiles&) = delete;
    DesktopFiles& operator=(const DesktopFiles&) = delete;

    // Adds the .mp3 and .lrc files among the absolute paths (a folder's from inside it), then plays the
    // first audio file given that made it into the play list; for a folder, its first in URL order.
    void open(std::vector<std::string> paths);
    // Adds them and leaves playback alone.
    void add(std::vector<std::string> paths);

    std::size_t waiting() const { return waiting_.size(); }

private:
    struct Request {
        std::vector<std::string> paths;
        bool play = false;
    };

    void submit(Request request);
    void runWaiting();
    void run(const Request& request);
    // After the play list the add operation queued has been loaded.
    void playFirstAdded(const std::vector<std::string>& paths);

    MainQueue& queue_;
    const PageState& page_;
    AddFiles& addFiles_;
    const BridgeOperations& operations_;
    std::deque<Request> waiting_;
    std::unique_ptr<RepeatingTimer> readyPoll_;
    std::shared_ptr<DesktopFiles*> self_;  // queued tasks reach this object only while it lives
};

}  // namespace tunelark
