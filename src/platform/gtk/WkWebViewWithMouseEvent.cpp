#include "platform/gtk/WkWebViewWithMouseEvent.h"

#include "platform/TextCatalog.h"
#include "platform/Utf8.h"
#include "platform/glib/GuardedCall.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <algorithm>
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
    // One of the view's fixed settings, like the two above. It opens no file to our page: only pages
    // loaded from file URLs get the access, and ours comes from our own scheme.
    webkit_settings_set_allow_file_access_from_file_urls(settings.get(), TRUE);
    // Accelerated compositing without a GPU costs several times the CPU of software drawing for this page.
    webkit_settings_set_hardware_acceleration_policy(
        settings.get(), gpuRequested() ? WEBKIT_HARDWARE_ACCELERATION_POLICY_ALWAYS : WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    return settings;
}

GObjectPtr<WebKitWebView> newView(WebKitWebContext* context, WebKitUserContentManager* contentManager) {
    auto settings = pageSettings();
    return GObjectPtr<WebKitWebView>::retain(
        WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager",
                                     contentManager, "settings", settings.get(), nullptr)));
}

}  // namespace

struct WkWebViewWithMouseEventSignals {
    static void loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer data) noexcept {
        if (event == WEBKIT_LOAD_FINISHED) static_cast<WkWebViewWithMouseEvent*>(data)->reapplyStyleOverride();
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
    connections_.emplace_back(view, "button-press-event", G_CALLBACK(&S::buttonPressed), this);
    connections_.emplace_back(view, "button-release-event", G_CALLBACK(&S::buttonReleased), this);
    connections_.emplace_back(view, "motion-notify-event", G_CALLBACK(&S::pointerMoved), this);
    connections_.emplace_back(view, "load-changed", G_CALLBACK(&S::loadChanged), this);
}

WkWebViewWithMouseEvent::WkWebViewWithMouseEvent(Callbacks callbacks)
    // Ephemeral: the page keeps nothing on disk between runs.
    : context_(GObjectPtr<WebKitWebContext>::adopt(webkit_web_context_new_ephemeral())),
      scheme_(context_.get(), kScheme, std::move(callbacks.resolvePageFile)),
      contentManager_(GObjectPtr<WebKitUserContentManager>::adopt(webkit_user_content_manager_new())),
      view_(newView(context_.get(), contentManager_.get())),
      navigationHooks_(view_.get(),
                       PageNavigationHooks::Callbacks{
                           std::move(callbacks.decideNavigation), std::move(callbacks.navigationFinished),
                           [this, ended = std::move(callbacks.webProcessTerminated)](const std::string& reason) {
                               // They were for the page that ended; the new one is told afresh.
                               heldCalls_.clear();
                               heldCallsTimeout_.cancel();
                               if (ended) ended(reason);
                               // The load starts a new page process; the page then posts "showWindow" again.
                               loadPage();
                           }}) {
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

// The page reads its texts' language from the address; English needs none.
void WkWebViewWithMouseEvent::loadPage() {
    const std::string& language = uiLanguage();
    const std::string uri = language == "en" ? std::string(kPageUri) : std::string(kPageUri) + "?lang=" + language;
    webkit_web_view_load_uri(view_.get(), uri.c_str());
}

void WkWebViewWithMouseEvent::evaluate(const std::string& script) {
    sendHeldCalls();
    g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "%s", script.c_str());
    webkit_web_view_evaluate_javascript(view_.get(), script.data(), static_cast<gssize>(script.size()), nullptr,
                                        nullptr, nullptr, nullptr, nullptr);
}

void WkWebViewWithMouseEvent::UnrefStyleSheet::operator()(WebKitUserStyleSheet* sheet) const noexcept {
    webkit_user_style_sheet_unref(sheet);
}

void WkWebViewWithMouseEvent::setStyleOverride(const std::string& css) {
    if (styleOverride_) {
        webkit_user_content_manager_remove_style_sheet(contentManager_.get(), styleOverride_.get());
        styleOverride_.reset();
    }
    if (css.empty()) return;
    // As the page's author would write it, so its rules take part in the page's cascade.
    styleOverride_.reset(webkit_user_style_sheet_new(css.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                                     WEBKIT_USER_STYLE_LEVEL_AUTHOR, nullptr, nullptr));
    webkit_user_content_manager_add_style_sheet(contentManager_.get(), styleOverride_.get());
}

// Once seen: a sheet added while the page's process was starting never reached that page, under load.
// Given again once the page has loaded, it is there for sure; can go when that race is fixed in WebKit.
void WkWebViewWithMouseEvent::reapplyStyleOverride() {
    if (!styleOverride_) return;
    webkit_user_content_manager_remove_style_sheet(contentManager_.get(), styleOverride_.get());
    webkit_user_content_manager_add_style_sheet(contentManager_.get(), styleOverride_.get());
}

namespace {

// Whether a GVariant carries the value exactly: not text that is not well-formed UTF-8 or holds a NUL.
bool carriable(const PageValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return !text || (isWellFormedUtf8(*text) && text->find('\0') == std::string::npos);
}

bool logsDebug() { return !g_log_writer_default_would_drop(G_LOG_LEVEL_DEBUG, kLogDomain); }

}  // namespace

// Out of sight, the page needs its calls in order, not in time: ten round trips a second woke the page's
// process, and ours for each answer, for a page nobody saw, which was half of what playing with the window
// minimised cost. Held, they go once a second.
void WkWebViewWithMouseEvent::callAll(const std::vector<PageCall>& calls) {
    if (inSight_) {
        sendCalls(calls);
        return;
    }
    heldCalls_.insert(heldCalls_.end(), calls.begin(), calls.end());
    if (!heldCallsTimeout_.pending()) heldCallsTimeout_.start(kHeldCallsDelayMs, &sendHeldCallsLater, this);
}

void WkWebViewWithMouseEvent::setInSight(bool inSight) {
    inSight_ = inSight;
    if (inSight_) sendHeldCalls();
}

void WkWebViewWithMouseEvent::sendHeldCalls() {
    heldCallsTimeout_.cancel();
    if (heldCalls_.empty()) return;
    sendCalls(std::exchange(heldCalls_, {}));
}

int WkWebViewWithMouseEvent::sendHeldCallsLater(void* self) noexcept {
    auto* view = static_cast<WkWebViewWithMouseEvent*>(self);
    view->heldCallsTimeout_.fired();
    guardedCall("held page calls", [&] { view->sendHeldCalls(); });
    return G_SOURCE_REMOVE;
}

// Every evaluation is a round trip to the page's process; the clock's two calls of a tick, and a burst of
// calls from one main-loop turn, go as one. The page gets one function body with the values as its
// arguments: the body's text depends only on which functions are called, so the page's script engine
// compiles each such text once. A script with the values written into it was a new text every time, ten
// a second from the clock, and the engine kept a compiled copy of each: the page's process grew by
// megabytes over minutes of play. Each call keeps its own try so that one that throws does not stop the
// rest, as separate evaluations would not.
void WkWebViewWithMouseEvent::sendCalls(const std::vector<PageCall>& calls) {
    const bool asValues = std::all_of(calls.begin(), calls.end(), [](const PageCall& call) {
        return std::all_of(call.arguments.begin(), call.arguments.end(), carriable);
    });
    if (!asValues) {
        // Rare text only a script string carries exactly.
        PageView::callAll(calls);
        return;
    }
    const bool logged = logsDebug();
    std::string body;
    GVariantBuilder arguments;
    g_variant_builder_init(&arguments, G_VARIANT_TYPE_VARDICT);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const PageCall& call = calls[i];
        if (logged) g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "%s", call.script().c_str());
        body += "try{";
        body += call.function;
        body += '(';
        for (std::size_t j = 0; j < call.arguments.size(); ++j) {
            if (j > 0) body += ',';
            const PageValue& value = call.arguments[j];
            // WebKit takes no booleans as arguments; the two texts of one are as constant as a name.
            if (const auto* flag = std::get_if<bool>(&value)) {
                body += *flag ? "true" : "false";
                continue;
            }
            const std::string name = "a" + std::to_string(i) + "_" + std::to_string(j);
            const auto* number = std::get_if<std::int64_t>(&value);
            g_variant_builder_add(&arguments, "{sv}", name.c_str(),
                                  number ? g_variant_new_int64(*number)
                                         : g_variant_new_string(std::get<std::string>(value).c_str()));
            body += name;
        }
        body += ")\n}catch(e){console.error(e)}";
    }
    webkit_web_view_call_async_javascript_function(view_.get(), body.data(), static_cast<gssize>(body.size()),
                                                   g_variant_builder_end(&arguments), nullptr, nullptr, nullptr,
                                                   nullptr, nullptr);
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
