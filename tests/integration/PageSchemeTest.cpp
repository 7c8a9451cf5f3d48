// The page's own web view and scheme with the real page folder: what the running page can fetch.
// Runs inside tests/support/with-session.sh (it needs a display).
#include "main_window/PageFolder.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"
#include "TempDir.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <functional>

namespace tunelark::test {
namespace {

bool runUntil(const std::function<bool()>& done, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const guint ticker = g_timeout_add(10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (!done() && std::chrono::steady_clock::now() < deadline) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(ticker);
    return done();
}

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
    PageFolder folder(resources + "/www");
    bool loaded = false;
    WkWebViewWithMouseEvent view(WkWebViewWithMouseEvent::Callbacks{
        [&](const std::string& path) -> std::optional<std::string> {
            auto file = folder.resolve(path);
            return file ? std::optional<std::string>(file->string()) : std::nullopt;
        },
        nullptr, [&] { loaded = true; }, nullptr});
    nlohmann::json results;
    view.registerHandler("schemeProbe", [&](const std::string& body) {
        results = nlohmann::json::parse(nlohmann::json::parse(body).get<std::string>());
    });
    view.loadPage();
    ASSERT_TRUE(runUntil([&] { return loaded; }, std::chrono::seconds(30))) << "the page did not load";

    const std::string own = "tunelark://app/js/core.js";
    // Ways out of the folder: another scheme, dot segments plain and encoded (an encoded slash keeps the
    // URL parser from removing them), and absolute paths.
    std::vector<std::string> outside = {
        "file:///etc/passwd",
        "tunelark://app/../tunelark.appinfo",
        "tunelark://app/%2e%2e/tunelark.appinfo",
        "tunelark://app/%2e%2e%2ftunelark.appinfo",
        "tunelark://app/..%2Ftunelark.appinfo",
        "tunelark://app/js/%2e%2e%2f%2e%2e%2ftunelark.appinfo",
        "tunelark://app/%2e%2e%2f%2e%2e%2f%2e%2e%2f%2e%2e%2f%2e%2e%2f%2e%2e%2f%2e%2e%2f%2e%2e%2fetc%2fpasswd",
        "tunelark://app//etc/passwd",
        "tunelark://app/%2Fetc%2Fpasswd",
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

}  // namespace
}  // namespace tunelark::test
