#pragma once
#include "page/PageState.h"
#include "platform/MainQueue.h"
#include "platform/PageView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

// The page-call operations: what native code says to the page, built from the page state where a call
// reports it. Main thread only.
class MainVC {
public:
    // The newest main view, set on creation and emptied only when that view is destroyed: a page call
    // still queued then finds no view and is dropped.
    static inline MainVC* shared = nullptr;

    MainVC(MainQueue& queue, PageView* webView, PageState& state);
    ~MainVC();
    MainVC(const MainVC&) = delete;
    MainVC& operator=(const MainVC&) = delete;

    PageState& state() { return state_; }
    const PageState& state() const { return state_; }
    // Whether there is a page to talk to.
    bool hasPage() const { return wkWebView_ != nullptr; }

    // Page calls: each posts a task to the main queue that builds the call and makes it, so
    // callers never wait. A call is dropped when there is no main view or web view by then. Calls made
    // one after another with nothing else posted in between share one task and go to the page together, in
    // order.
    void setMode();  // the play mode as it is when the call is built
    void setIsPlaying(bool playing);
    void setPlayingFilePath(const std::string& filePath);
    void setMainFileName(const std::string& name);
    void setDuration(const std::string& text);
    void setCurrent(const std::string& text);
    void setSliderCurrentValue(std::int64_t value);
    void setSpeed(const std::string& text);
    // The lyrics switch and the row mode (as it is when the call is built).
    void setLyricsSwitches(bool on);

    // Tells a freshly loaded page again what it was last told of playback: playing or not (as last sent,
    // so a pause shows), the playing path, and the duration, display name and speed last sent
    // (initialSpeed when no speed was sent).
    void sendPlaybackAgain(const std::string& initialSpeed);

    // Evaluates a ready script at once (from main-queue tasks that already built it); nothing without a
    // web view.
    void evaluate(const std::string& script);

    MainQueue& queue() { return queue_; }

private:
    using BuildCall = std::function<PageCall(const MainVC&)>;
    struct Batch {
        std::vector<BuildCall> calls;
        bool sent = false;
    };
    // The call is built from the main view found in the slot when the task runs.
    void post(BuildCall buildCall);
    MainQueue& queue_;
    // The calls of the last task posted, open for more while that task is still the last one posted.
    std::shared_ptr<Batch> batch_;
    std::uint64_t batchPostedAs_ = 0;
    PageView* wkWebView_;  // not owned
    PageState& state_;
    // The last value of each page call that nothing else repeats (the position is sent on every tick).
    bool sentIsPlaying_ = false;
    std::optional<std::string> sentDuration_;
    std::optional<std::string> sentMainFileName_;
    std::optional<std::string> sentSpeed_;
};

}  // namespace tunelark
