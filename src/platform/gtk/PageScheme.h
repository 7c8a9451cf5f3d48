#pragma once
#include "platform/glib/GObjectHandles.h"

#include <functional>
#include <optional>
#include <string>

typedef struct _WebKitWebContext WebKitWebContext;

namespace tunelark {

// Serves the page's files to one web context as "<scheme>://app/<path>": only the files the resolver
// names, every other request refused. WebKit cannot take a scheme back from a context, so once this is
// destroyed the scheme stays registered but refuses everything. Main thread only.
class PageScheme {
public:
    // The real file a request path names ("/js/main.js", percent-encoded), or nothing to refuse it.
    using Resolve = std::function<std::optional<std::string>(const std::string& requestPath)>;

    // The scheme is also registered as secure and CORS-enabled, so the page may fetch its own files.
    PageScheme(WebKitWebContext* context, const char* scheme, Resolve resolve);
    ~PageScheme();
    PageScheme(const PageScheme&) = delete;
    PageScheme& operator=(const PageScheme&) = delete;

private:
    friend struct PageSchemeCallbacks;
    struct State;
    GObjectPtr<WebKitWebContext> context_;  // keeps state_, which the context owns, alive
    State* state_;
};

}  // namespace tunelark
