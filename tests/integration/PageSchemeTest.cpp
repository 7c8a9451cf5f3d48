// The page's own web view and scheme with the real page folder: what the running page can fetch; and the
// scheme alone on a context of the test's own, over its whole life.
// Runs inside tests/support/with-session.sh (it needs a display).
#include "LoadedPage.h"
#include "platform/gtk/PageScheme.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"
#include "TempDir.h"
#include "MainLoop.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <nlohmann/json.hpp>
#include <webkit2/webkit2.h>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace tunelark::test {
namespace {

// Fetches each URL from the page and posts, per URL, the status and body or the error it met.
constexpr const char* kProbeScript = R"JS(
(async (urls) => {
  const results = {};
  for (const url of urls) {
    try {
      const response = await fetch(url);
      results[url] = { status: response.status, body: await response.text() };
    } catch (error) {
      results[url] = { error: String(error) };
    }
  }
  await new Promise((resolve) => {
    const request = new XMLHttpRequest();
    request.open('GET', 'file:///etc/passwd');
    request.onload = () => { results['xhr file:///etc/passwd'] = { status: request.status, body: request.responseText }; resolve(); };
    request.onerror = () => { results['xhr file:///etc/passwd'] = { error: 'refused' }; resolve(); };
    try { request.send(); } catch (error) { results['xhr file:///etc/passwd'] = { error: String(error) }; resolve(); }
  });
  window.webkit.messageHandlers.schemeProbe.postMessage(JSON.stringify(results));
}))JS";

TEST(PageScheme, ThePageReadsItsOwnFilesAndNothingOutsideItsFolder) {
    ASSERT_TRUE(gtk_init_check(nullptr, nullptr)) << "no display";
    const std::string resources = TUNELARK_SOURCE_DIR "/resources";
    LoadedPage page;
    WkWebViewWithMouseEvent& view = page.view();
    nlohmann::json results;
    view.registerHandler("schemeProbe", [&](const std::string& body) {
        results = nlohmann::json::parse(nlohmann::json::parse(body).get<std::string>());
    });
    view.loadPage();
    ASSERT_TRUE(runUntil([&] { return page.finished(); }, std::chrono::seconds(30))) << "the page did not load";

    const std::string own = "tunelark://app/js/core.js";
    // Ways out of the folder as the web view hands them on: another scheme, dot segments plain and encoded
    // (an encoded slash keeps the URL parser from removing them), and absolute paths. Every other spelling
    // is the resolver's, and its unit test has them.
    std::vector<std::string> outside = {
        "file:///etc/passwd",
        "tunelark://app/../tunelark.appinfo",
        "tunelark://app/%2e%2e%2ftunelark.appinfo",
        "tunelark://app/js/%2e%2e%2f%2e%2e%2ftunelark.appinfo",
        "tunelark://app//etc/passwd",
        "tunelark://app/" + resources + "/tunelark.appinfo",
    };
    nlohmann::json urls = outside;
    urls.push_back(own);
    view.evaluate(std::string(kProbeScript) + "(" + urls.dump() + ");");
    ASSERT_TRUE(runUntil([&] { return !results.is_null(); }, std::chrono::seconds(30))) << "no probe results";

    EXPECT_EQ(results[own].value("status", 0), 200) << results[own].dump();
    EXPECT_EQ(results[own].value("body", ""), readAll(resources + "/www/js/core.js"));
    outside.push_back("xhr file:///etc/passwd");
    for (const auto& url : outside) {
        const auto& result = results[url];
        EXPECT_TRUE(result.contains("error")) << url << " was served: " << result.dump().substr(0, 200);
    }
}

struct LoadOutcome {
    bool finished = false;
    bool failed = false;
    std::string title;
};

void loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer data) noexcept {
    if (event == WEBKIT_LOAD_FINISHED) static_cast<LoadOutcome*>(data)->finished = true;
}

gboolean loadFailed(WebKitWebView*, WebKitLoadEvent, gchar*, GError*, gpointer data) noexcept {
    static_cast<LoadOutcome*>(data)->failed = true;
    return TRUE;  // no error page, so no title of WebKit's own
}

LoadOutcome load(WebKitWebView* view, const std::string& uri) {
    LoadOutcome outcome;
    SignalConnection changed(view, "load-changed", G_CALLBACK(&loadChanged), &outcome);
    SignalConnection failed(view, "load-failed", G_CALLBACK(&loadFailed), &outcome);
    webkit_web_view_load_uri(view, uri.c_str());
    runUntil([&] { return outcome.finished; }, std::chrono::seconds(30));
    // The title comes in after the load has finished.
    if (!outcome.failed) {
        runUntil([&] { return webkit_web_view_get_title(view) != nullptr; }, std::chrono::seconds(5));
    }
    if (const char* title = webkit_web_view_get_title(view)) outcome.title = title;
    return outcome;
}

TEST(PageScheme, ServesOnlyWhatTheResolverNamesAndNothingOnceGone) {
    ASSERT_TRUE(gtk_init_check(nullptr, nullptr)) << "no display";
    TempDir dir;
    writeAll(dir.file("index.html"), "<!doctype html><title>served</title>");
    std::vector<std::string> asked;
    auto context = GObjectPtr<WebKitWebContext>::adopt(webkit_web_context_new_ephemeral());
    std::optional<PageScheme> scheme(std::in_place, context.get(), "tl-scheme-test",
                                     [&](const std::string& path) -> std::optional<std::string> {
                                         asked.push_back(path);
                                         if (path != "/index.html") return std::nullopt;
                                         return dir.file("index.html");
                                     });
    auto view = GObjectPtr<WebKitWebView>::retain(
        WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context.get(), nullptr)));

    // Served as HTML, so the page's title is read.
    auto outcome = load(view.get(), "tl-scheme-test://app/index.html");
    ASSERT_TRUE(outcome.finished);
    EXPECT_FALSE(outcome.failed);
    EXPECT_EQ(outcome.title, "served");
    EXPECT_EQ(asked, std::vector<std::string>{"/index.html"});

    // The resolver gets the path with its escapes kept, and what it refuses is not served.
    outcome = load(view.get(), "tl-scheme-test://app/no%20such.html");
    EXPECT_TRUE(outcome.finished && outcome.failed);
    EXPECT_EQ(asked.back(), "/no%20such.html");

    // Another host is refused before the resolver is asked.
    asked.clear();
    outcome = load(view.get(), "tl-scheme-test://elsewhere/index.html");
    EXPECT_TRUE(outcome.finished && outcome.failed);
    EXPECT_TRUE(asked.empty());

    // The context keeps the scheme, but with the object gone its resolver is never called again.
    scheme.reset();
    outcome = load(view.get(), "tl-scheme-test://app/index.html");
    EXPECT_TRUE(outcome.finished && outcome.failed);
    EXPECT_TRUE(asked.empty());
}

}  // namespace
}  // namespace tunelark::test
