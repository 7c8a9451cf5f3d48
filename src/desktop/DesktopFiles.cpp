#include "desktop/DesktopFiles.h"

#include "library/store/FileNames.h"
#include "platform/Console.h"

#include <unordered_set>

namespace tunelark {

DesktopFiles::DesktopFiles(MainQueue& queue, const PageState& page, AddFiles& addFiles,
                           const BridgeOperations& operations)
    : queue_(queue),
      page_(page),
      addFiles_(addFiles),
      operations_(operations),
      self_(std::make_shared<DesktopFiles*>(this)) {}

void DesktopFiles::open(std::vector<std::string> paths) { submit({std::move(paths), true}); }

void DesktopFiles::add(std::vector<std::string> paths) { submit({std::move(paths), false}); }

void DesktopFiles::submit(Request request) {
    if (request.paths.empty()) return;
    waiting_.push_back(std::move(request));
    if (page_.loaded) {
        runWaiting();
        return;
    }
    if (!readyPoll_) {
        readyPoll_ = queue_.startRepeating(kReadyPoll, [this] {
            if (page_.loaded) runWaiting();
        });
    }
}

void DesktopFiles::runWaiting() {
    readyPoll_.reset();
    while (!waiting_.empty()) {
        Request request = std::move(waiting_.front());
        waiting_.pop_front();
        run(request);
    }
}

void DesktopFiles::run(const Request& request) {
    consoleLine("Desktop Add Files " + std::to_string(request.paths.size()));
    if (!request.play) {
        addFiles_.add(request.paths);
        return;
    }
    std::weak_ptr<DesktopFiles*> self = self_;
    // A folder's walk may outlast this object: the callback reaches it only through self.
    addFiles_.add(request.paths, [&queue = queue_, self](const std::vector<std::string>& added) {
        // The add operation has queued the play-list load; this runs after it.
        queue.post([self, added] {
            if (auto alive = self.lock()) (*alive)->playFirstAdded(added);
        });
    });
}

void DesktopFiles::playFirstAdded(const std::vector<std::string>& paths) {
    if (!page_.storedMp3Entities || !operations_.playItem) return;
    // A set, since a folder hands over thousands of paths.
    std::unordered_set<std::string> listed;
    for (const auto& entry : *page_.storedMp3Entities)
        if (entry && entry->filePath) listed.insert(*entry->filePath);
    for (const auto& path : paths) {
        const std::string url = fileUrlFromPath(path);
        if (listed.count(url)) {
            operations_.playItem(url);
            return;
        }
    }
}

}  // namespace tunelark
