#include "platform/gtk/DesktopUrlOpener.h"

#include "platform/glib/GuardedCall.h"

#include <gio/gio.h>

#include <string>

namespace tunelark {
namespace {

void launched(GObject*, GAsyncResult* result, gpointer data) noexcept {
    auto* url = static_cast<std::string*>(data);
    GError* error = nullptr;
    if (!g_app_info_launch_default_for_uri_finish(result, &error)) {
        // No application for the scheme is the desktop's business; we only note it.
        g_log(kLogDomain, G_LOG_LEVEL_MESSAGE, "cannot open %s: %s", url->c_str(), error ? error->message : "");
        g_clear_error(&error);
    }
    delete url;
}

}  // namespace

void DesktopUrlOpener::open(const std::string& url) {
    g_app_info_launch_default_for_uri_async(url.c_str(), nullptr, nullptr, launched, new std::string(url));
}

}  // namespace tunelark
