#include "platform/gtk/WkWebViewWithMouseEvent.h"

#include "platform/glib/GuardedCall.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <cstdlib>
#include <cstring>
#include <utility>

namespace tunelark {

void GdkEventHolder::Free::operator()(GdkEvent* event) const noexcept { gdk_event_free(event); }

GdkEventHolder::GdkEventHolder(const GdkEvent* event) : event_(event ? gdk_event_copy(event) : nullptr) {}

struct WkWebViewWithMouseEvent::Handler {
    std::function<void(const std::string&)> receive;

    static void received(WebKitUserContentManager*, WebKitJavascriptResult* result, gpointer data) noexcept {
        guardedCall("script message", [&] {
            GCharPtr json(jsc_value_to_json(webkit_javascript_result_get_js_value(result), 0));
            // undefined has no JSON form; the page passed nothing.
            static_cast<Handler*>(data)->receive(json ? json.get() : "null");
        });
    }
};

namespace {

bool gpuRequested() {
    const char* value = std::getenv("TUNELARK_GPU");
    return value && std::strcmp(value, "1") == 0;
}

GObjectPtr<WebKitSettings> pageSettings() {
    auto settings = GObjectPtr<WebKitSettings>::adopt(webkit_settings_new());
    webkit_settings_set_javascript_can_open_windows_automatically(settings.get(), TRUE);
    webkit_settings_set_enable_javascript(settings.get(), TRUE);
    // Kept although the page is not served from file URLs any more, so this grants nothing.
    webkit_settings_set_allow_file_access_from_file_urls(settings.get(), TRUE);
    // Accelerated compositing without a GPU costs several times the CPU of software drawing for this page.
    webkit_settings_set_hardware_acceleration_policy(
        settings.get(), gpuRequested() ? WEBKIT_HARDWARE_ACCELERATION_POLICY_ALWAYS : WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    return settings;
}

const char* mimeTypeFor(const std::string& path) {
    // Named here, so that missing MIME data on a machine cannot make WebKit refuse the page's scripts.
    static const std::pair<const char*, const char*> known[] = {
        {".html", "text/html"}, {".js", "text/javascript"}, {".css", "text/css"}, {".svg", "image/svg+xml"},
        {".png", "image/png"},  {".json", "application/json"}, {".woff2", "font/woff2"}, {".jpg", "image/jpeg"},
    };
    for (const auto& [extension, type] : known) {
        if (path.ends_with(extension)) return type;
    }
    return "application/octet-stream";
}

struct SchemeState {
    std::function<std::optional<std::string>(const std::string&)> resolve;
};

std::optional<std::string> requestPath(WebKitURISchemeRequest* request) {
    // Parsed with escapes kept; the resolver decodes them itself, once.
    GUri* uri = g_uri_parse(webkit_uri_scheme_request_get_uri(request), G_URI_FLAGS_ENCODED, nullptr);
    if (!uri) return std::nullopt;
    std::optional<std::string> path;
    if (g_strcmp0(g_uri_get_host(uri), "app") == 0) path = g_uri_get_path(uri);
    g_uri_unref(uri);
    return path;
}

void refuse(WebKitURISchemeRequest* request) {
    GError* error = g_error_new(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "Not a file of the page: %s",
                                webkit_uri_scheme_request_get_uri(request));
    webkit_uri_scheme_request_finish_error(request, error);
    g_error_free(error);
}

void servePageFile(WebKitURISchemeRequest* request, gpointer data) noexcept {
    guardedCall("page file request", [&] {
        const auto& state = *static_cast<SchemeState*>(data);
        const auto path = requestPath(request);
        const auto file = path && state.resolve ? state.resolve(*path) : std::nullopt;
        gchar* contents = nullptr;
        gsize length = 0;
        if (!file || !g_file_get_contents(file->c_str(), &contents, &length, nullptr)) {
            g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "refused %s", webkit_uri_scheme_request_get_uri(request));
            refuse(request);
            return;
        }
        GBytes* bytes = g_bytes_new_take(contents, length);
        GInputStream* stream = g_memory_input_stream_new_from_bytes(bytes);
        webkit_uri_scheme_request_finish(request, stream, static_cast<gint64>(length), mimeTypeFor(*file));
        g_object_unref(stream);
        g_bytes_unref(bytes);
    });
}

void freeSchemeState(gpointer data) noexcept { delete static_cast<SchemeState*>(data); }

NavigationAction navigationActionOf(WebKitPolicyDecision* decision) {
    WebKitNavigationAction* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const char* uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    return NavigationAction{
        webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED, uri ? uri : ""};
}

// The page's own alerts, confirms and prompts, its context menu and its new windows have no effect.
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

struct WkWebViewWithMouseEventSignals {
    static gboolean decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 gpointer data) noexcept {
        if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return FALSE;
        auto* self = static_cast<WkWebViewWithMouseEvent*>(data);
        const auto answer = guardedCall("navigation policy", NavigationDecision::Allow, [&] {
            return self->callbacks_.decideNavigation ? self->callbacks_.decideNavigation(navigationActionOf(decision))
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
        auto* self = static_cast<WkWebViewWithMouseEvent*>(data);
        if (event != WEBKIT_LOAD_FINISHED || !self->callbacks_.navigationFinished) return;
        guardedCall("navigation finished", self->callbacks_.navigationFinished);
    }

    static gboolean loadFailed(WebKitWebView*, WebKitLoadEvent, gchar* uri, GError* error, gpointer) noexcept {
        // An allowed link that WebKit cannot show (tel:, sms:, another application's scheme) must not
        // replace the page with an error page.
        g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "not shown in the page: %s (%s)", uri, error ? error->message : "");
        return TRUE;
    }

    static void webProcessTerminated(WebKitWebView*, WebKitWebProcessTerminationReason reason,
                                     gpointer data) noexcept {
        auto* self = static_cast<WkWebViewWithMouseEvent*>(data);
        guardedCall("page process ended", [&] {
            if (self->callbacks_.webProcessTerminated) self->callbacks_.webProcessTerminated(terminationText(reason));
            // The load starts a new page process; the page then posts "showWindow" again.
            self->loadPage();
        });
    }

    static gboolean buttonPressed(GtkWidget*, GdkEvent* event, gpointer data) noexcept {
        if (event->type == GDK_BUTTON_PRESS) {
            guardedCall("button press", [&] {
                auto* self = static_cast<WkWebViewWithMouseEvent*>(data);
                self->lastMouseDownEvent_ = GdkEventHolder(event);
                self->pressDrag_ = {};
                self->pressDrag_.held = true;
            });
        }
        return FALSE;  // the page still gets the press
    }

    static gboolean buttonReleased(GtkWidget*, GdkEventButton* event, gpointer data) noexcept {
        auto* self = static_cast<WkWebViewWithMouseEvent*>(data);
        const GdkEvent* press = self->lastMouseDownEvent_.get();
        if (press && press->button.button == event->button) self->pressDrag_ = {};
        return FALSE;
    }

    // A move starts only from real motion: a window manager's move grabs the pointer and swallows the
    // release, so starting on the press would keep every click, and so double clicks, from the page.
    static gboolean pointerMoved(GtkWidget* widget, GdkEventMotion* event, gpointer data) noexcept {
        auto* self = static_cast<WkWebViewWithMouseEvent*>(data);
        auto& drag = self->pressDrag_;
        const GdkEvent* press = self->lastMouseDownEvent_.get();
        if (!drag.held || !press) return FALSE;
        const guint button = press->button.button;
        if (button < 1 || button > 5 || !(event->state & (GDK_BUTTON1_MASK << (button - 1)))) {
            drag = {};  // released where we did not see it
            return FALSE;
        }
        drag.dragged = drag.dragged || gtk_drag_check_threshold(widget, int(press->button.x_root),
                                                                int(press->button.y_root), int(event->x_root),
                                                                int(event->y_root));
        drag.motionTime = event->time;
        if (drag.dragged && drag.startMove) {
            const auto start = std::exchange(drag, {}).startMove;
            guardedCall("window move", [&] { start(press, event->time); });
        }
        return FALSE;
    }
};

void WkWebViewWithMouseEvent::connectSignals() {
    using S = WkWebViewWithMouseEventSignals;
    auto* view = view_.get();
    connections_.emplace_back(view, "decide-policy", G_CALLBACK(&S::decidePolicy), this);
    connections_.emplace_back(view, "load-changed", G_CALLBACK(&S::loadChanged), this);
    connections_.emplace_back(view, "load-failed", G_CALLBACK(&S::loadFailed), this);
    connections_.emplace_back(view, "web-process-terminated", G_CALLBACK(&S::webProcessTerminated), this);
    connections_.emplace_back(view, "button-press-event", G_CALLBACK(&S::buttonPressed), this);
    connections_.emplace_back(view, "button-release-event", G_CALLBACK(&S::buttonReleased), this);
    connections_.emplace_back(view, "motion-notify-event", G_CALLBACK(&S::pointerMoved), this);
    connections_.emplace_back(view, "script-dialog", G_CALLBACK(&ignoreScriptDialog), nullptr);
    connections_.emplace_back(view, "context-menu", G_CALLBACK(&ignoreContextMenu), nullptr);
    connections_.emplace_back(view, "create", G_CALLBACK(&ignoreNewWindow), nullptr);
}

WkWebViewWithMouseEvent::WkWebViewWithMouseEvent(Callbacks callbacks) : callbacks_(std::move(callbacks)) {
    // Ephemeral: the page keeps nothing on disk between runs.
    context_ = GObjectPtr<WebKitWebContext>::adopt(webkit_web_context_new_ephemeral());
    webkit_web_context_register_uri_scheme(context_.get(), kScheme, servePageFile,
                                           new SchemeState{callbacks_.resolvePageFile}, freeSchemeState);
    WebKitSecurityManager* security = webkit_web_context_get_security_manager(context_.get());
    webkit_security_manager_register_uri_scheme_as_secure(security, kScheme);
    webkit_security_manager_register_uri_scheme_as_cors_enabled(security, kScheme);

    contentManager_ = GObjectPtr<WebKitUserContentManager>::adopt(webkit_user_content_manager_new());
    auto settings = pageSettings();
    view_ = GObjectPtr<WebKitWebView>::retain(WEBKIT_WEB_VIEW(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context_.get(), "user-content-manager",
                     contentManager_.get(), "settings", settings.get(), nullptr)));
    connectSignals();
}

WkWebViewWithMouseEvent::~WkWebViewWithMouseEvent() {
    connections_.clear();
    for (const auto& [name, handler] : handlers_) {
        webkit_user_content_manager_unregister_script_message_handler(contentManager_.get(), name.c_str());
    }
}

GtkWidget* WkWebViewWithMouseEvent::widget() const { return GTK_WIDGET(view_.get()); }

bool WkWebViewWithMouseEvent::moveWhenDragged(StartMove startMove) {
    const GdkEvent* press = lastMouseDownEvent_.get();
    if (!pressDrag_.held || !press) return false;
    if (!pressDrag_.dragged) {
        pressDrag_.startMove = std::move(startMove);
        return true;
    }
    // The pointer left the threshold before the page asked for the move.
    const std::uint32_t time = std::exchange(pressDrag_, {}).motionTime;
    startMove(press, time);
    return true;
}

void WkWebViewWithMouseEvent::loadPage() { webkit_web_view_load_uri(view_.get(), kPageUri); }

void WkWebViewWithMouseEvent::evaluate(const std::string& script) {
    g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "%s", script.c_str());
    webkit_web_view_evaluate_javascript(view_.get(), script.data(), static_cast<gssize>(script.size()), nullptr,
                                        nullptr, nullptr, nullptr, nullptr);
}

void WkWebViewWithMouseEvent::registerHandler(const std::string& name,
                                              std::function<void(const std::string&)> handler) {
    auto& entry = handlers_[name];
    if (entry) {
        // A name is registered with WebKit once; a second registration replaces our handler only.
        entry->receive = std::move(handler);
        return;
    }
    entry = std::make_unique<Handler>(Handler{std::move(handler)});
    webkit_user_content_manager_register_script_message_handler(contentManager_.get(), name.c_str());
    const std::string signal = "script-message-received::" + name;
    connections_.emplace_back(contentManager_.get(), signal.c_str(), G_CALLBACK(&Handler::received), entry.get());
}

}  // namespace tunelark
