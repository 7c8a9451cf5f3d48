// Runs each case of the test files in a freshly loaded main-window page, in WebKitGTK with a native side
// that records the posts: page_test_runner ABSOLUTE_WWW_DIR HARNESS.js TEST.js...
#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>

namespace {

using json = nlohmann::json;

WebKitWebView* view = nullptr;
json posts = json::array();  // [{name, body}] since the page was loaded
json report;                 // what the harness reported last

void onMessage(WebKitUserContentManager* manager, WebKitJavascriptResult* result, gpointer) noexcept {
    gchar* text = jsc_value_to_json(webkit_javascript_result_get_js_value(result), 0);
    json body = json::parse(text ? text : "null", nullptr, false);
    g_free(text);
    const std::string name = g_quark_to_string(g_signal_get_invocation_hint(manager)->detail);
    if (name == "testReport") report = body;
    else posts.push_back({{"name", name}, {"body", body}});
}

// Evaluates a script as the program sends page calls; answers with its error text (empty if it ran) and the posts.
struct Pending { WebKitScriptMessageReply* reply; JSCContext* context; };
void answerNative(GObject*, GAsyncResult* result, gpointer data) noexcept {
    auto* pending = static_cast<Pending*>(data);
    GError* error = nullptr;
    if (JSCValue* ran = webkit_web_view_evaluate_javascript_finish(view, result, &error)) g_object_unref(ran);
    const json answer = {{"error", error ? error->message : ""}, {"posts", posts}};
    const std::string text = answer.dump(-1, ' ', false, json::error_handler_t::replace);
    JSCValue* value = jsc_value_new_from_json(pending->context, text.c_str());
    webkit_script_message_reply_return_value(pending->reply, value);
    g_object_unref(value);
    g_clear_error(&error);
    webkit_script_message_reply_unref(pending->reply);
    g_object_unref(pending->context);
    delete pending;
}
gboolean onNative(WebKitUserContentManager*, JSCValue* value, WebKitScriptMessageReply* reply, gpointer) noexcept {
    gchar* script = jsc_value_to_string(value);
    auto* context = JSC_CONTEXT(g_object_ref(jsc_value_get_context(value)));
    webkit_web_view_evaluate_javascript(view, script, -1, nullptr, "native-call", nullptr, answerNative,
                                        new Pending{webkit_script_message_reply_ref(reply), context});
    g_free(script);
    return TRUE;
}

// Answers the link to native://calcUsername as the program does; the page stays where it is.
gboolean onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                        gpointer) noexcept {
    if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
    auto* action = webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const std::string uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    if (uri.starts_with("file://")) return FALSE;
    posts.push_back({{"name", "navigation"}, {"body", uri}});
    const char* answer = uri.starts_with("native://calcUsername") ? "username='Orvendel';" : "";
    webkit_web_view_evaluate_javascript(view, answer, -1, nullptr, nullptr, nullptr, nullptr, nullptr);
    webkit_policy_decision_ignore(decision);
    return TRUE;
}

// Loads the page afresh, runs the script and gives what the harness reported; waits 30 s at most for each.
json runInFreshPage(const std::string& page, const std::string& script) {
    const auto waitFor = [](auto done) {
        for (const gint64 end = g_get_monotonic_time() + 30 * G_USEC_PER_SEC; !done() && g_get_monotonic_time() < end;)
            g_main_context_iteration(nullptr, TRUE);
        return done();
    };
    posts = json::array();
    webkit_web_view_load_uri(view, page.c_str());
    if (!waitFor([] { return std::ranges::find(posts, json{{"name", "showWindow"}, {"body", ""}}) != posts.end(); }))
        return {{"message", "the page did not load and post showWindow"}};
    report = nullptr;
    webkit_web_view_evaluate_javascript(view, script.c_str(), -1, nullptr, "test.js", nullptr, nullptr, nullptr);
    return waitFor([] { return !report.is_null(); }) ? report : json{{"message", "timed out"}};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4 || !gtk_init_check(&argc, &argv)) {
        std::cerr << "usage (with a display): page_test_runner ABSOLUTE_WWW_DIR HARNESS.js TEST.js...\n";
        return 2;
    }
    const std::string page = "file://" + std::string(argv[1]) + "/index.html";
    WebKitUserContentManager* manager = webkit_user_content_manager_new();
    for (const char* name : {"showWindow", "startMoveWindow", "stopMoveWindow", "nativeLog", "nativeDoCopy",
             "nativeAlert", "nativeChangeMaxMin", "nativeToAddMp3", "nativeClearPlayList", "nativeSetCharset",
             "nativeMoveItem", "nativeRemove", "nativePlay", "nativePlayItem", "nativePause", "nativePauseItem",
             "nativeChangeMode", "nativePlayNext", "nativePlayPrev", "nativeSetCurrentPercent", "nativeTurnLyricsOn",
             "nativeTurnOneRowOrTow", "nativePlayNextLyric", "nativePlayPrevLyric", "nativeSpeedUp",
             "nativeSpeedDown", "testReport"}) {
        webkit_user_content_manager_register_script_message_handler(manager, name);
        const std::string signal = "script-message-received::" + std::string(name);
        g_signal_connect(manager, signal.c_str(), G_CALLBACK(onMessage), nullptr);
    }
    webkit_user_content_manager_register_script_message_handler_with_reply(manager, "testNative", nullptr);
    g_signal_connect(manager, "script-message-with-reply-received::testNative", G_CALLBACK(onNative), nullptr);
    view = WEBKIT_WEB_VIEW(webkit_web_view_new_with_user_content_manager(manager));
    webkit_settings_set_hardware_acceleration_policy(webkit_web_view_get_settings(view),
                                                     WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    // The page reads its language catalogues with fetch, which a page from a file may do only when allowed.
    webkit_settings_set_allow_file_access_from_file_urls(webkit_web_view_get_settings(view), TRUE);
    g_signal_connect(view, "decide-policy", G_CALLBACK(onDecidePolicy), nullptr);
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_default_size(GTK_WINDOW(window), 1200, 600);
    gtk_container_add(GTK_CONTAINER(window), GTK_WIDGET(view));
    gtk_widget_show_all(window);
    g_timeout_add(50, [](gpointer) noexcept -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);  // wakes the waits

    const auto read = [](const char* path) { std::ifstream in(path); return std::string(std::istreambuf_iterator(in), {}); };
    int failed = 0;
    for (int i = 3; i < argc; ++i) {
        const std::string code = read(argv[2]) + "\n" + read(argv[i]) + "\nTunelarkTest.run(";
        for (int n = 0;; ++n) {
            const json result = runInFreshPage(page, code + std::to_string(n) + ");");
            const bool end = result.value("end", false), ok = result.value("ok", false) && !end;
            if (end && n > 0) break;
            const std::string name = result.value("name", "case " + std::to_string(n + 1));
            std::cout << (ok ? "ok   " : "FAIL ") << argv[i] << " :: " << name
                      << (ok ? "" : ": " + result.value("message", std::string("no cases"))) << std::endl;
            failed += !ok;
            if (!result.contains("name")) break;
        }
    }
    std::cout << "page tests: " << (failed ? std::to_string(failed) + " failed" : "all passed") << '\n';
    return failed ? 1 : 0;
}
