#pragma once
#include "platform/PageCall.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tunelark {

// The embedded web view that shows the page. Main thread only.
class PageView {
public:
    using MessageHandler = std::function<void(const std::string& bodyJson)>;

    virtual ~PageView() = default;
    // Runs a script in the page's main frame without waiting; its result and errors are dropped.
    virtual void evaluate(const std::string& script) = 0;
    // Makes the calls in order, as evaluating their scripts one after another would; a view may hand
    // them to the page in one go, with their values as values. A call that throws does not keep the
    // later ones from running.
    virtual void callAll(const std::vector<PageCall>& calls);

    // Binds a message name of window.webkit.messageHandlers; the handler gets the body as JSON text
    // ("null" when the page passed nothing). Handlers run on the main thread, one message at a time.
    // A name binds once: a second handler for it is refused with a console line, the first one stays.
    bool bindMessage(const std::string& name, MessageHandler handler);
    // A style sheet applied over the page's own, in this page and every later load; empty for none.
    virtual void setStyleOverride(const std::string& css) = 0;

protected:
    // For implementers: binds a name with the page. Called by bindMessage only, once per name.
    virtual void registerHandler(const std::string& name, MessageHandler handler) = 0;

private:
    std::set<std::string> boundNames_;
};

// What the page asks to navigate to; the answer is allow or cancel.
struct NavigationAction {
    bool isLinkActivation = false;
    std::string url;  // absolute URL text
};

enum class NavigationDecision { Allow, Cancel };

}  // namespace tunelark
