#include "platform/gtk/PageScheme.h"

#include "platform/glib/GuardedCall.h"

#include <webkit2/webkit2.h>

#include <utility>

namespace tunelark {

struct PageScheme::State {
    Resolve resolve;  // empty once the PageScheme is gone
};

namespace {

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

}  // namespace

struct PageSchemeCallbacks {
    static void servePageFile(WebKitURISchemeRequest* request, gpointer data) noexcept {
        guardedCall("page file request", [&] {
            const auto& state = *static_cast<PageScheme::State*>(data);
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

    static void freeState(gpointer data) noexcept { delete static_cast<PageScheme::State*>(data); }
};

PageScheme::PageScheme(WebKitWebContext* context, const char* scheme, Resolve resolve)
    : context_(GObjectPtr<WebKitWebContext>::retain(context)), state_(new State{std::move(resolve)}) {
    webkit_web_context_register_uri_scheme(context, scheme, &PageSchemeCallbacks::servePageFile, state_,
                                           &PageSchemeCallbacks::freeState);
    WebKitSecurityManager* security = webkit_web_context_get_security_manager(context);
    webkit_security_manager_register_uri_scheme_as_secure(security, scheme);
    webkit_security_manager_register_uri_scheme_as_cors_enabled(security, scheme);
}

PageScheme::~PageScheme() {
    // The context may outlive us; the resolver's captures may not.
    state_->resolve = nullptr;
}

}  // namespace tunelark
