#include "library/AddRequests.h"

#include "platform/Console.h"
#include "platform/Localized.h"

#include <utility>

namespace tunelark {

AddRequests::AddRequests(MainQueue& queue, const FileTree& tree, ProgressIndicator& progress, AddStep addStep,
                         Launcher launcher)
    : queue_(queue), tree_(tree), progress_(progress), addStep_(std::move(addStep)), launcher_(std::move(launcher)) {
    if (!launcher_) {
        // Moving a new thread in joins the one before, which has ended or been told to stop.
        launcher_ = [this](std::function<void()> work) { thread_ = std::jthread(std::move(work)); };
    }
}

AddRequests::~AddRequests() {
    if (walk_) walk_->control.stop = true;
}

bool AddRequests::holdsFolder(const std::vector<std::string>& paths) const {
    for (const auto& path : paths) {
        if (tree_.examine(path).kind == TreeNode::Kind::Folder) return true;
    }
    return false;
}

void AddRequests::add(std::vector<std::string> paths, Added added) {
    if (paths.empty()) return;
    Request request{std::move(paths), std::move(added)};
    if (!busy() && !holdsFolder(request.paths)) {
        addNow(request);
        return;
    }
    waiting_.push_back(std::move(request));
    if (!walk_) startNext();
}

void AddRequests::addNow(const Request& request) {
    if (addStep_(request.paths) && request.added) request.added(request.paths);
}

void AddRequests::startNext() {
    while (!walk_ && !waiting_.empty()) {
        Request request = std::move(waiting_.front());
        waiting_.pop_front();
        if (!holdsFolder(request.paths)) {
            addNow(request);
            continue;
        }
        consoleLine("Walking folders: " + std::to_string(request.paths.size()) + " chosen");
        walk_ = std::make_shared<Walk>();
        walk_->chosen = std::move(request.paths);
        walkAdded_ = std::move(request.added);
        launcher_([walk = walk_, &tree = tree_] {
            walk->result = walkFolders(tree, walk->chosen, walk->control);
            walk->done.store(true, std::memory_order_release);
        });
        poll_ = queue_.startRepeating(kPoll, [this] { poll(); });
        if (!progressDelay_ && !progressShown_) {
            progressDelay_ = queue_.startRepeating(kProgressDelay, [this] {
                progressDelay_.reset();
                showProgress();
            });
        }
    }
    if (!walk_) endProgress();
}

namespace {

// The count put into a text already in the user's language.
std::string withCount(std::string text, std::size_t count) {
    const auto at = text.find("{}");
    if (at != std::string::npos) text.replace(at, 2, std::to_string(count));
    return text;
}

}  // namespace

void AddRequests::poll() {
    if (!walk_) return;
    if (!walk_->done.load(std::memory_order_acquire)) {
        if (progressShown_) showProgress();
        return;
    }
    if (progressShown_ && !storing_) {
        // The store step holds the main thread: the header bar says so (without Cancel, too late now)
        // and is drawn before the next poll stores.
        storing_ = true;
        progress_.show(withCount(localized("Adding {} files"), walk_->result.paths.size()), {});
        return;
    }
    storing_ = false;
    poll_.reset();
    const auto walk = std::exchange(walk_, nullptr);
    const Added added = std::exchange(walkAdded_, {});
    for (const auto& line : walk->result.skipped) consoleLine(line);
    consoleLine("Walked folders: " + std::to_string(walk->control.found.load()) + " audio and lyric files");
    addNow(Request{walk->result.paths, added});
    startNext();
}

void AddRequests::showProgress() {
    if (!walk_) return;
    progressShown_ = true;
    progress_.show(withCount(localized("Adding folders: {} files found"), walk_->control.found.load()), [this] { cancel(); });
}

void AddRequests::endProgress() {
    progressDelay_.reset();
    if (std::exchange(progressShown_, false)) progress_.hide();
}

void AddRequests::cancel() {
    if (!busy()) return;
    if (walk_) walk_->control.stop = true;
    consoleLine("Adding cancelled: nothing was added from " + std::to_string(waiting_.size() + (walk_ ? 1 : 0)) +
                " request(s)");
    walk_.reset();
    walkAdded_ = {};
    storing_ = false;
    waiting_.clear();
    poll_.reset();
    endProgress();
}

}  // namespace tunelark
