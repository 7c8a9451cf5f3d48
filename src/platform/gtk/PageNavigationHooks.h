#pragma once
#include "platform/PageView.h"
#include "platform/glib/GObjectHandles.h"

#include <functional>
#include <string>
#include <vector>

typedef struct _WebKitWebView WebKitWebView;

namespace tunelark {

// What a web view does when its page navigates, finishes loading or loses its process. The page's
// own alerts, confirms and prompts, its context menu and its new windows have no effect, and a link
// WebKit cannot show leaves the page in place. Main thread only.
class PageNavigationHooks {
public:
    struct Callbacks {
        std::function<NavigationDecision(const NavigationAction&)> decideNavigation;  // allow when empty
        std::function<void()> navigationFinished;
        // The page's process ended ("crashed", ...).
        std::function<void(const std::string& reason)> webProcessTerminated;
    };

    PageNavigationHooks(WebKitWebView* view, Callbacks callbacks);
    PageNavigationHooks(const PageNavigationHooks&) = delete;
    PageNavigationHooks& operator=(const PageNavigationHooks&) = delete;

private:
    friend struct PageNavigationSignals;
    Callbacks callbacks_;
    std::vector<SignalConnection> connections_;
};

}  // namespace tunelark
