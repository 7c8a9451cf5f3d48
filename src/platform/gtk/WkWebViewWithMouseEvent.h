#pragma once
#include "platform/PageView.h"
#include "platform/glib/GObjectHandles.h"
#include "platform/glib/GSourceHandles.h"
#include "platform/gtk/PageNavigationHooks.h"
#include "platform/gtk/PageScheme.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

typedef struct _GtkWidget GtkWidget;
typedef struct _WebKitWebView WebKitWebView;
typedef struct _WebKitWebContext WebKitWebContext;
typedef struct _WebKitUserContentManager WebKitUserContentManager;
typedef struct _WebKitUserStyleSheet WebKitUserStyleSheet;
typedef union _GdkEvent GdkEvent;

namespace tunelark {

// A copy of one GDK event, freed with it.
class GdkEventHolder {
public:
    GdkEventHolder() = default;
    explicit GdkEventHolder(const GdkEvent* event);  // copies
    const GdkEvent* get() const { return event_.get(); }
    explicit operator bool() const { return event_ != nullptr; }

private:
    struct Free {
        void operator()(GdkEvent* event) const noexcept;
    };
    std::unique_ptr<GdkEvent, Free> event_;
};

// The page's web view: WebKitGTK with the page served from our own URI scheme (PageScheme), its
// navigation hooks (PageNavigationHooks), the bridge's message handlers, and the last button press kept
// for window drags. Main thread only.
class WkWebViewWithMouseEvent : public PageView {
public:
    // The scheme the page is served under, as "tunelark://app/<path in the page folder>".
    static constexpr const char* kScheme = "tunelark";
    static constexpr const char* kPageUri = "tunelark://app/index.html";

    struct Callbacks {
        // The real file a request path names ("/js/main.js", percent-encoded), or nothing to refuse it.
        std::function<std::optional<std::string>(const std::string& requestPath)> resolvePageFile;
        std::function<NavigationDecision(const NavigationAction&)> decideNavigation;
        std::function<void()> navigationFinished;
        // The page's process ended ("crashed", ...); the view then loads the page again.
        std::function<void(const std::string& reason)> webProcessTerminated;
    };

    explicit WkWebViewWithMouseEvent(Callbacks callbacks);
    ~WkWebViewWithMouseEvent() override;
    WkWebViewWithMouseEvent(const WkWebViewWithMouseEvent&) = delete;
    WkWebViewWithMouseEvent& operator=(const WkWebViewWithMouseEvent&) = delete;

    void evaluate(const std::string& script) override;
    // One function body for all of them with their values as arguments, each logged as evaluate logs
    // its script. While the view is out of sight the calls are held and go together, in order, at most
    // kHeldCallsDelayMs later, when the view comes into sight, or before the next evaluate.
    void callAll(const std::vector<PageCall>& calls) override;
    // Whether anyone can see the page: false while its window is minimised, hidden or fully covered.
    void setInSight(bool inSight);
    static constexpr unsigned kHeldCallsDelayMs = 1000;
    void registerHandler(const std::string& name, std::function<void(const std::string& bodyJson)> handler) override;
    void setStyleOverride(const std::string& css) override;

    void loadPage();
    GtkWidget* widget() const;
    // The most recent button press in the view, or nullptr before the first.
    const GdkEvent* lastMouseDownEvent() const { return lastMouseDownEvent_.get(); }
    // Calls `startMove` once with the last press and the time of the motion, as soon as the pointer
    // has moved beyond the drag threshold with that press's button down (at once if it already has).
    // A release or a new press drops it. False when no press is held.
    using StartMove = std::function<void(const GdkEvent* press, std::uint32_t motionTime)>;
    bool moveWhenDragged(StartMove startMove);

private:
    friend struct WkWebViewWithMouseEventSignals;
    struct Handler;
    void connectSignals();
    void reapplyStyleOverride();
    void sendCalls(const std::vector<PageCall>& calls);
    void sendHeldCalls();
    static int sendHeldCallsLater(void* self) noexcept;

    GObjectPtr<WebKitWebContext> context_;
    PageScheme scheme_;
    GObjectPtr<WebKitUserContentManager> contentManager_;
    GObjectPtr<WebKitWebView> view_;
    PageNavigationHooks navigationHooks_;
    GdkEventHolder lastMouseDownEvent_;
    struct PressDrag {
        bool held = false;             // the last press's button is still down
        bool dragged = false;          // the pointer has left the drag threshold since that press
        std::uint32_t motionTime = 0;  // of the latest motion since that press
        StartMove startMove;
    } pressDrag_;
    std::map<std::string, std::unique_ptr<Handler>> handlers_;
    struct UnrefStyleSheet {
        void operator()(WebKitUserStyleSheet* sheet) const noexcept;
    };
    std::unique_ptr<WebKitUserStyleSheet, UnrefStyleSheet> styleOverride_;
    std::vector<SignalConnection> connections_;
    bool inSight_ = true;
    std::vector<PageCall> heldCalls_;
    OneShotTimeout heldCallsTimeout_;
};

}  // namespace tunelark
