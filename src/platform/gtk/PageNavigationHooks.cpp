#include "platform/gtk/PageNavigationHooks.h"

#include "platform/glib/GuardedCall.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <utility>

namespace tunelark {

namespace {

NavigationAction navigationActionOf(WebKitPolicyDecision* decision) {
    WebKitNavigationAction* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const char* uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    return NavigationAction{
        webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED, uri ? uri : ""};
}

gboolean ignoreScriptDialog(WebKitWebView*, WebKitScriptDialog*, gpointer) noexcept { return TRUE; }
gboolean ignoreContextMenu(WebKitWebView*, WebKitContextMenu*, GdkEvent*, WebKitHitTestResult*, gpointer) noexcept {
    return TRUE;
}
GtkWidget* ignoreNewWindow(WebKitWebView*, WebKitNavigationAction*, gpointer) noexcept { return nullptr; }

const char* terminationText(WebKitWebProcessTerminationReason reason) {
    switch (reason) {
    case WEBKIT_WEB_PROCESS_CRASHED: return "crashed";
    case WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT: return "exceeded its memory limit";
    case WEBKIT_WEB_PROCESS_TERMINATED_BY_API: return "ended on request";
    }
    return "ended";
}

}  // namespace

struct PageNavigationSignals {
    static gboolean decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 gpointer data) noexcept {
        if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return FALSE;
        const auto& callbacks = static_cast<PageNavigationHooks*>(data)->callbacks_;
        const auto answer = guardedCall("navigation policy", NavigationDecision::Allow, [&] {
            return callbacks.decideNavigation ? callbacks.decideNavigation(navigationActionOf(decision))
                                              : NavigationDecision::Allow;
        });
        if (answer == NavigationDecision::Allow) {
            webkit_policy_decision_use(decision);
        } else {
            webkit_policy_decision_ignore(decision);
        }
        return TRUE;
    }

    static void loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer data) noexcept {
        const auto& callbacks = static_cast<PageNavigationHooks*>(data)->callbacks_;
        if (event != WEBKIT_LOAD_FINISHED || !callbacks.navigationFinished) return;
        guardedCall("navigation finished", callbacks.navigationFinished);
    }

    static gboolean loadFailed(WebKitWebView*, WebKitLoadEvent, gchar* uri, GError* error, gpointer) noexcept {
        // An allowed link that WebKit cannot show (tel:, sms:, another application's scheme) must not
        // replace the page with an error page.
        g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "not shown in the page: %s (%s)", uri, error ? error->message : "");
        return TRUE;
    }

    static void webProcessTerminated(WebKitWebView*, WebKitWebProcessTerminationReason reason,
                                     gpointer data) noexcept {
        const auto& callbacks = static_cast<PageNavigationHooks*>(data)->callbacks_;
        if (!callbacks.webProcessTerminated) return;
        guardedCall("page process ended", [&] { callbacks.webProcessTerminated(terminationText(reason)); });
    }
};

PageNavigationHooks::PageNavigationHooks(WebKitWebView* view, Callbacks callbacks)
    : callbacks_(std::move(callbacks)) {
    using S = PageNavigationSignals;
    connections_.emplace_back(view, "decide-policy", G_CALLBACK(&S::decidePolicy), this);
    connections_.emplace_back(view, "load-changed", G_CALLBACK(&S::loadChanged), this);
    connections_.emplace_back(view, "load-failed", G_CALLBACK(&S::loadFailed), this);
    connections_.emplace_back(view, "web-process-terminated", G_CALLBACK(&S::webProcessTerminated), this);
    connections_.emplace_back(view, "script-dialog", G_CALLBACK(&ignoreScriptDialog), nullptr);
    connections_.emplace_back(view, "context-menu", G_CALLBACK(&ignoreContextMenu), nullptr);
    connections_.emplace_back(view, "create", G_CALLBACK(&ignoreNewWindow), nullptr);
}

}  // namespace tunelark
