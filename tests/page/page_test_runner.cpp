// Runs the page of the main window in a real WebKitGTK web view with the native side replaced by a
// recorder, and drives it with the JavaScript test files given on the command line.
//
//   page_test_runner --www DIR --harness FILE TEST.js...
//   page_test_runner --www DIR --screenshot OUT.png [--size WxH] [--hold SECONDS] DEMO.js
//
// --hold keeps the page open that long before the screenshot, printing each post, so that a person or
// xdotool can try it.
// Every case of a test file runs in a freshly loaded page. Exit status: 0 all passed, 1 a case failed
// or timed out, 2 the runner could not start.
#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tunelark {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

// The 26 messages the page may post to the native side.
const char* const kMessageNames[] = {
    "showWindow", "startMoveWindow", "stopMoveWindow", "nativeLog", "nativeDoCopy", "nativeAlert",
    "nativeChangeMaxMin", "nativeToAddMp3", "nativeClearPlayList", "nativeSetCharset", "nativeMoveItem",
    "nativeRemove", "nativePlay", "nativePlayItem", "nativePause", "nativePauseItem", "nativeChangeMode",
    "nativePlayNext", "nativePlayPrev", "nativeSetCurrentPercent", "nativeTurnLyricsOn",
    "nativeTurnOneRowOrTow", "nativePlayNextLyric", "nativePlayPrevLyric", "nativeSpeedUp", "nativeSpeedDown",
};

constexpr auto kLoadTimeout = std::chrono::seconds(15);
constexpr auto kCaseTimeout = std::chrono::seconds(30);
const char* const kPageUri = "tunelark://app/index.html";

template <typename T>
struct GObjectDeleter {
    void operator()(T* object) const { g_object_unref(object); }
};
template <typename T>
using GObjectPtr = std::unique_ptr<T, GObjectDeleter<T>>;

struct GFreeDeleter {
    void operator()(void* p) const { g_free(p); }
};
using GCharPtr = std::unique_ptr<char, GFreeDeleter>;

std::optional<std::string> readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string mimeTypeOf(const fs::path& path) {
    const std::string ext = path.extension().string();
    if (ext == ".html") return "text/html";
    if (ext == ".css") return "text/css";
    if (ext == ".js") return "text/javascript";
    if (ext == ".svg") return "image/svg+xml";
    if (ext == ".png") return "image/png";
    return "application/octet-stream";
}

// A file below root named by a URL path, or nothing when the path leaves root or names no file.
std::optional<fs::path> fileBelow(const fs::path& root, const std::string& urlPath) {
    std::error_code error;
    const fs::path file = fs::weakly_canonical(root / fs::path(urlPath).relative_path(), error);
    if (error || !fs::is_regular_file(file, error)) return std::nullopt;
    const auto rel = file.lexically_relative(root);
    if (rel.empty() || *rel.begin() == "..") return std::nullopt;
    return file;
}

struct Recorded {
    std::string name;
    std::string bodyJson;
};

class PageTestRunner {
public:
    PageTestRunner(fs::path www, int width, int height);
    ~PageTestRunner();
    PageTestRunner(const PageTestRunner&) = delete;
    PageTestRunner& operator=(const PageTestRunner&) = delete;

    bool loadPage();
    int runFile(const fs::path& harness, const fs::path& testFile);
    bool screenshot(const std::string& demoScript, const fs::path& out, int holdSeconds);

private:
    static void onSchemeRequest(WebKitURISchemeRequest* request, gpointer self) noexcept;
    static void onMessage(WebKitUserContentManager*, WebKitJavascriptResult* result, gpointer data) noexcept;
    static gboolean onMessageWithReply(WebKitUserContentManager*, JSCValue* value, WebKitScriptMessageReply* reply,
                                       gpointer data) noexcept;
    static gboolean onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                   gpointer self) noexcept;
    static void onLoadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self) noexcept;

    void serve(WebKitURISchemeRequest* request);
    void record(const std::string& name, JSCValue* value);
    void report(const std::string& bodyJson);
    void answer(const std::string& name, JSCValue* value, WebKitScriptMessageReply* reply);
    void evaluate(const std::string& script, const std::string& sourceUri);
    std::optional<std::vector<std::string>> listCases(const std::string& script, const fs::path& file);
    bool runCase(const std::string& script, const fs::path& file, const std::string& name);
    bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);
    void registerHandlers(WebKitUserContentManager* manager);

    fs::path www_;
    GtkWidget* window_ = nullptr;
    WebKitWebView* view_ = nullptr;  // owned by window_
    GObjectPtr<WebKitWebContext> context_;
    GObjectPtr<WebKitUserContentManager> manager_;
    std::vector<Recorded> posts_;
    std::size_t taken_ = 0;
    bool loaded_ = false;
    bool echoPosts_ = false;
    std::optional<json> caseList_;
    std::optional<json> caseResult_;
};

PageTestRunner::PageTestRunner(fs::path www, int width, int height)
    : www_(fs::canonical(www)),
      context_(webkit_web_context_new()),
      manager_(webkit_user_content_manager_new()) {
    webkit_web_context_register_uri_scheme(context_.get(), "tunelark", &onSchemeRequest, this, nullptr);
    webkit_security_manager_register_uri_scheme_as_secure(webkit_web_context_get_security_manager(context_.get()),
                                                          "tunelark");
    registerHandlers(manager_.get());
    view_ = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context_.get(), "user-content-manager",
                                         manager_.get(), nullptr));
    WebKitSettings* settings = webkit_web_view_get_settings(view_);
    webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    webkit_settings_set_enable_write_console_messages_to_stdout(settings, TRUE);
    webkit_settings_set_javascript_can_open_windows_automatically(settings, TRUE);
    g_signal_connect(view_, "decide-policy", G_CALLBACK(&onDecidePolicy), this);
    g_signal_connect(view_, "load-changed", G_CALLBACK(&onLoadChanged), this);
    window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_default_size(GTK_WINDOW(window_), width, height);
    gtk_container_add(GTK_CONTAINER(window_), GTK_WIDGET(view_));
    gtk_widget_show_all(window_);
}

PageTestRunner::~PageTestRunner() {
    g_signal_handlers_disconnect_by_data(manager_.get(), this);
    g_signal_handlers_disconnect_by_data(view_, this);
    gtk_widget_destroy(window_);
}

void PageTestRunner::registerHandlers(WebKitUserContentManager* manager) {
    for (const char* name : kMessageNames) {
        webkit_user_content_manager_register_script_message_handler(manager, name);
        const std::string signal = std::string("script-message-received::") + name;
        g_signal_connect(manager, signal.c_str(), G_CALLBACK(&onMessage), this);
    }
    webkit_user_content_manager_register_script_message_handler(manager, "testReport");
    g_signal_connect(manager, "script-message-received::testReport", G_CALLBACK(&onMessage), this);
    for (const char* name : {"testTake", "testNative"}) {
        webkit_user_content_manager_register_script_message_handler_with_reply(manager, name, nullptr);
        const std::string signal = std::string("script-message-with-reply-received::") + name;
        g_signal_connect(manager, signal.c_str(), G_CALLBACK(&onMessageWithReply), this);
    }
}

void PageTestRunner::onSchemeRequest(WebKitURISchemeRequest* request, gpointer self) noexcept {
    try {
        static_cast<PageTestRunner*>(self)->serve(request);
    } catch (const std::exception& e) {
        std::cerr << "page_test_runner: serving failed: " << e.what() << '\n';
    }
}

// Serves only regular files inside the page folder, as the program does.
void PageTestRunner::serve(WebKitURISchemeRequest* request) {
    const auto file = fileBelow(www_, webkit_uri_scheme_request_get_path(request));
    const auto content = file ? readFile(*file) : std::nullopt;
    if (!content) {
        GError* error = g_error_new(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "not in the page folder: %s",
                                    webkit_uri_scheme_request_get_uri(request));
        webkit_uri_scheme_request_finish_error(request, error);
        g_error_free(error);
        return;
    }
    GBytes* bytes = g_bytes_new(content->data(), content->size());
    GObjectPtr<GInputStream> stream(g_memory_input_stream_new_from_bytes(bytes));
    g_bytes_unref(bytes);
    webkit_uri_scheme_request_finish(request, stream.get(), static_cast<gint64>(content->size()),
                                     mimeTypeOf(*file).c_str());
}

void PageTestRunner::onMessage(WebKitUserContentManager*, WebKitJavascriptResult* result, gpointer data) noexcept {
    auto* self = static_cast<PageTestRunner*>(data);
    try {
        // The handler name is not passed to the callback; read it from the signal being emitted.
        GSignalInvocationHint* hint = g_signal_get_invocation_hint(self->manager_.get());
        const std::string name = hint && hint->detail ? g_quark_to_string(hint->detail) : "";
        JSCValue* value = webkit_javascript_result_get_js_value(result);
        if (name == "testReport") {
            GCharPtr text(jsc_value_to_json(value, 0));
            self->report(text ? text.get() : "null");
        } else {
            self->record(name, value);
        }
    } catch (const std::exception& e) {
        std::cerr << "page_test_runner: message failed: " << e.what() << '\n';
    }
}

void PageTestRunner::record(const std::string& name, JSCValue* value) {
    GCharPtr text(jsc_value_to_json(value, 0));
    posts_.push_back({name, text ? text.get() : "null"});
    if (echoPosts_ || name == "nativeLog" || name == "nativeAlert")
        std::cout << "  page " << name << ": " << posts_.back().bodyJson << std::endl;
}

void PageTestRunner::report(const std::string& bodyJson) {
    json body = json::parse(bodyJson, nullptr, false);
    if (body.is_string()) body = json::parse(body.get<std::string>(), nullptr, false);
    const std::string type = body.is_object() ? body.value("type", "") : "";
    if (type == "list") caseList_ = body;
    else if (type == "result") caseResult_ = body;
    else if (type == "log") std::cout << "  test: " << body.value("text", "") << '\n';
    else std::cerr << "page_test_runner: unknown report " << bodyJson << '\n';
}

gboolean PageTestRunner::onMessageWithReply(WebKitUserContentManager*, JSCValue* value,
                                            WebKitScriptMessageReply* reply, gpointer data) noexcept {
    auto* self = static_cast<PageTestRunner*>(data);
    try {
        GSignalInvocationHint* hint = g_signal_get_invocation_hint(self->manager_.get());
        self->answer(hint && hint->detail ? g_quark_to_string(hint->detail) : "", value, reply);
    } catch (const std::exception& e) {
        webkit_script_message_reply_return_error_message(reply, e.what());
    }
    return TRUE;
}

struct PendingReply {
    WebKitScriptMessageReply* reply;
    GObjectPtr<JSCContext> context;
};

// Evaluating a script for the page answers with the error text, empty when it ran.
void replyEvaluated(GObject* view, GAsyncResult* result, gpointer data) noexcept {
    std::unique_ptr<PendingReply> pending(static_cast<PendingReply*>(data));
    GError* error = nullptr;
    GObjectPtr<JSCValue> ignored(webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &error));
    GObjectPtr<JSCValue> message(jsc_value_new_string(pending->context.get(), error ? error->message : ""));
    webkit_script_message_reply_return_value(pending->reply, message.get());
    webkit_script_message_reply_unref(pending->reply);
    if (error) g_error_free(error);
}

// testTake answers the posts recorded since the previous take; testNative evaluates a script the way
// the program sends page calls and answers once it ran.
void PageTestRunner::answer(const std::string& name, JSCValue* value, WebKitScriptMessageReply* reply) {
    if (name == "testNative") {
        GCharPtr script(jsc_value_to_string(value));
        auto* pending = new PendingReply{webkit_script_message_reply_ref(reply),
                                         GObjectPtr<JSCContext>(JSC_CONTEXT(g_object_ref(jsc_value_get_context(value))))};
        webkit_web_view_evaluate_javascript(view_, script.get(), -1, nullptr, "native-call", nullptr,
                                            &replyEvaluated, pending);
        return;
    }
    json taken = json::array();
    for (; taken_ < posts_.size(); ++taken_) {
        json body = json::parse(posts_[taken_].bodyJson, nullptr, false);
        taken.push_back({{"name", posts_[taken_].name}, {"body", body}, {"json", posts_[taken_].bodyJson}});
    }
    const std::string text = taken.dump(-1, ' ', false, json::error_handler_t::replace);
    GObjectPtr<JSCValue> result(jsc_value_new_from_json(jsc_value_get_context(value), text.c_str()));
    webkit_script_message_reply_return_value(reply, result.get());
}

// Answers the link to native://calcUsername as the program does and keeps the page where it is.
gboolean PageTestRunner::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                        gpointer data) noexcept {
    auto* self = static_cast<PageTestRunner*>(data);
    if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
    WebKitNavigationAction* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const char* uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    if (g_str_has_prefix(uri, "tunelark://")) return FALSE;
    try {
        self->posts_.push_back({"navigation", json(uri).dump()});
        if (g_str_has_prefix(uri, "native://calcUsername")) self->evaluate("username='Orvendel';", "native-call");
    } catch (const std::exception& e) {
        std::cerr << "page_test_runner: navigation failed: " << e.what() << '\n';
    }
    webkit_policy_decision_ignore(decision);
    return TRUE;
}

void PageTestRunner::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer data) noexcept {
    auto* self = static_cast<PageTestRunner*>(data);
    if (event != WEBKIT_LOAD_FINISHED) return;
    self->loaded_ = true;
    // The program runs this after every load; the page must not depend on it.
    self->evaluate("document.body.setAttribute('oncontextmenu', 'event.preventDefault();');", "native-call");
}

void PageTestRunner::evaluate(const std::string& script, const std::string& sourceUri) {
    webkit_web_view_evaluate_javascript(view_, script.c_str(), static_cast<gssize>(script.size()), nullptr,
                                        sourceUri.c_str(), nullptr, nullptr, nullptr);
}

bool PageTestRunner::waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    bool expired = false;
    const guint timer = g_timeout_add(static_cast<guint>(timeout.count()), [](gpointer flag) noexcept -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
    }, &expired);
    while (!done() && !expired) g_main_context_iteration(nullptr, TRUE);
    if (!expired) g_source_remove(timer);
    return done();
}

bool PageTestRunner::loadPage() {
    loaded_ = false;
    posts_.clear();
    taken_ = 0;
    webkit_web_view_load_uri(view_, kPageUri);
    const auto shown = [this] {
        if (!loaded_) return false;
        for (const auto& post : posts_)
            if (post.name == "showWindow") return true;
        return false;
    };
    return waitUntil(shown, kLoadTimeout);
}

std::optional<std::vector<std::string>> PageTestRunner::listCases(const std::string& script, const fs::path& file) {
    caseList_.reset();
    evaluate(script + "\nTunelarkTest.list();\n", file.string());
    if (!waitUntil([this] { return caseList_.has_value(); }, kCaseTimeout)) return std::nullopt;
    return caseList_->value("cases", std::vector<std::string>{});
}

bool PageTestRunner::runCase(const std::string& script, const fs::path& file, const std::string& name) {
    const std::string label = file.filename().string() + " :: " + name;
    if (!loadPage()) {
        std::cout << "FAIL " << label << ": the page did not load and post showWindow\n";
        return false;
    }
    caseResult_.reset();
    evaluate(script + "\nTunelarkTest.run(" + json(name).dump() + ");\n", file.string());
    if (!waitUntil([this] { return caseResult_.has_value(); }, kCaseTimeout)) {
        std::cout << "FAIL " << label << ": timed out\n";
        return false;
    }
    const bool ok = caseResult_->value("ok", false);
    std::cout << (ok ? "ok   " : "FAIL ") << label;
    if (!ok) std::cout << ": " << caseResult_->value("message", std::string("(no message)"));
    std::cout << std::endl;
    return ok;
}

int PageTestRunner::runFile(const fs::path& harness, const fs::path& testFile) {
    const auto harnessText = readFile(harness);
    const auto testText = readFile(testFile);
    if (!harnessText || !testText) {
        std::cout << "FAIL cannot read " << harness << " or " << testFile << '\n';
        return 1;
    }
    const std::string script = *harnessText + "\n" + *testText;
    if (!loadPage()) {
        std::cout << "FAIL " << testFile.filename().string() << ": the page did not load and post showWindow\n";
        return 1;
    }
    const auto cases = listCases(script, testFile);
    if (!cases || cases->empty()) {
        std::cout << "FAIL " << testFile.filename().string() << ": no test cases reported\n";
        return 1;
    }
    int failed = 0;
    for (const auto& name : *cases) failed += runCase(script, testFile, name) ? 0 : 1;
    return failed;
}

bool PageTestRunner::screenshot(const std::string& demoScript, const fs::path& out, int holdSeconds) {
    if (!loadPage()) return false;
    evaluate(demoScript, "demo.js");
    echoPosts_ = holdSeconds > 0;
    bool settled = false;
    g_timeout_add(800 + 1000 * static_cast<guint>(holdSeconds), [](gpointer flag) noexcept -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
    }, &settled);
    waitUntil([&settled] { return settled; }, std::chrono::seconds(5 + holdSeconds));
    struct Shot { cairo_surface_t* surface = nullptr; bool done = false; } shot;
    webkit_web_view_get_snapshot(
        view_, WEBKIT_SNAPSHOT_REGION_VISIBLE, WEBKIT_SNAPSHOT_OPTIONS_NONE, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) noexcept {
            auto* s = static_cast<Shot*>(data);
            s->surface = webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
            s->done = true;
        },
        &shot);
    if (!waitUntil([&shot] { return shot.done; }, std::chrono::seconds(10)) || !shot.surface) return false;
    const bool written = cairo_surface_write_to_png(shot.surface, out.c_str()) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(shot.surface);
    return written;
}

struct Options {
    fs::path www;
    fs::path harness;
    std::optional<fs::path> screenshot;
    int width = 1200;
    int height = 600;
    int holdSeconds = 0;
    std::vector<fs::path> files;
};

std::optional<Options> parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--www" && hasValue) options.www = argv[++i];
        else if (arg == "--harness" && hasValue) options.harness = argv[++i];
        else if (arg == "--screenshot" && hasValue) options.screenshot = argv[++i];
        else if (arg == "--hold" && hasValue) options.holdSeconds = std::atoi(argv[++i]);
        else if (arg == "--size" && hasValue) {
            if (std::sscanf(argv[++i], "%dx%d", &options.width, &options.height) != 2) return std::nullopt;
        } else if (arg.rfind("--", 0) == 0) return std::nullopt;
        else options.files.emplace_back(arg);
    }
    const bool complete = !options.www.empty() && !options.files.empty() &&
                          (options.screenshot ? options.files.size() == 1 : !options.harness.empty());
    if (!complete || !fs::is_regular_file(options.www / "index.html")) return std::nullopt;
    return options;
}

int run(const Options& options) {
    PageTestRunner runner(options.www, options.width, options.height);
    if (options.screenshot) {
        const auto demo = readFile(options.files.front());
        if (demo && runner.screenshot(*demo, *options.screenshot, options.holdSeconds)) return 0;
        std::cerr << "page_test_runner: no screenshot written\n";
        return 1;
    }
    int failed = 0;
    for (const auto& file : options.files) failed += runner.runFile(options.harness, file);
    if (failed > 0) std::cout << "page tests: " << failed << " failed\n";
    else std::cout << "page tests: all passed\n";
    return failed > 0 ? 1 : 0;
}

}  // namespace
}  // namespace tunelark

int main(int argc, char** argv) {
    const auto options = tunelark::parseOptions(argc, argv);
    if (!options) {
        std::cerr << "usage: page_test_runner --www DIR --harness FILE TEST.js...\n"
                     "       page_test_runner --www DIR --screenshot OUT.png [--size WxH] [--hold SECONDS] DEMO.js\n";
        return 2;
    }
    if (!gtk_init_check(&argc, &argv)) {
        std::cerr << "page_test_runner: no display\n";
        return 2;
    }
    return tunelark::run(*options);
}
