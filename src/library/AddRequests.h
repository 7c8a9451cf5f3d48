#pragma once
#include "library/FolderWalk.h"
#include "platform/FileTree.h"
#include "platform/MainQueue.h"
#include "platform/ProgressIndicator.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tunelark {

// Requests to add chosen files and folders, carried out one after the other. A request without a folder
// is added at once. A request with folders has them walked off the main thread; then all its files are
// added on the main thread in one step, so no edit of the play list comes between. A walk that lasts
// longer than kProgressDelay shows its progress, and the store step after it is announced there. Cancel drops the running request and the waiting ones:
// none of them adds anything, since a part of a walk is an arbitrary part of a folder. Main thread only.
class AddRequests {
public:
    static constexpr std::chrono::milliseconds kProgressDelay{500};
    static constexpr std::chrono::milliseconds kPoll{50};

    // The add operation's store step; false when nothing could be stored.
    using AddStep = std::function<bool(const std::vector<std::string>& paths)>;
    // After the store step: the paths it was given, folders replaced by their files.
    using Added = std::function<void(const std::vector<std::string>& paths)>;
    // Runs work on another thread; by default on a thread this object owns.
    using Launcher = std::function<void(std::function<void()> work)>;

    AddRequests(MainQueue& queue, const FileTree& tree, ProgressIndicator& progress, AddStep addStep,
                Launcher launcher = {});
    ~AddRequests();  // stops a running walk and waits for its thread
    AddRequests(const AddRequests&) = delete;
    AddRequests& operator=(const AddRequests&) = delete;

    void add(std::vector<std::string> paths, Added added = {});
    void cancel();
    bool busy() const { return walk_ != nullptr || !waiting_.empty(); }

private:
    struct Walk {
        std::vector<std::string> chosen;
        WalkControl control;
        WalkResult result;  // written by the walking thread before done
        std::atomic<bool> done{false};
    };
    struct Request {
        std::vector<std::string> paths;
        Added added;
    };

    bool holdsFolder(const std::vector<std::string>& paths) const;
    void addNow(const Request& request);
    void startNext();
    void poll();
    void showProgress();
    void endProgress();

    MainQueue& queue_;
    const FileTree& tree_;
    ProgressIndicator& progress_;
    AddStep addStep_;
    Launcher launcher_;
    std::deque<Request> waiting_;
    std::shared_ptr<Walk> walk_;  // the running walk, shared with its thread
    Added walkAdded_;
    std::unique_ptr<RepeatingTimer> poll_;
    std::unique_ptr<RepeatingTimer> progressDelay_;
    bool progressShown_ = false;
    bool storing_ = false;  // the walk has ended and the header bar has been told the store step comes
    std::jthread thread_;  // last: joined before the members it might still reach go
};

}  // namespace tunelark
