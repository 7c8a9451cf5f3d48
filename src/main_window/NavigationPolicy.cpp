#include "main_window/NavigationPolicy.h"

#include <algorithm>
#include <utility>

namespace tunelark {
namespace {

// ASCII only: URL schemes are ASCII whatever the locale says about other bytes.
bool isAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isSchemeChar(char c) { return isAsciiLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; }

}  // namespace

NavigationPolicy::NavigationPolicy(PageView& page, UrlOpener& opener, std::vector<std::string> queriesSchemes)
    : page_(page), opener_(opener), queriesSchemes_(std::move(queriesSchemes)) {}

NavigationDecision NavigationPolicy::decide(const NavigationAction& action) {
    if (!action.isLinkActivation) return NavigationDecision::Allow;
    const std::string_view url = action.url;
    if (url.starts_with("sms:") || url.starts_with("tel:")) {
        opener_.open(action.url);
        return NavigationDecision::Allow;
    }
    const auto scheme = schemeOf(url);
    if (scheme && isQueriesScheme(*scheme)) {
        opener_.open(action.url);
        return NavigationDecision::Allow;
    }
    if (scheme == "native" && url.starts_with("native://calcUsername")) {
        page_.evaluate(std::string(kUsernameScript));
        return NavigationDecision::Cancel;
    }
    return NavigationDecision::Allow;
}

void NavigationPolicy::navigationFinished() { page_.evaluate(std::string(kContextMenuSwitchOff)); }

std::optional<std::string_view> NavigationPolicy::schemeOf(std::string_view url) {
    // A scheme is a letter followed by letters, digits, "+", "-" or ".", ended by a colon.
    const auto colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0) return std::nullopt;
    const auto scheme = url.substr(0, colon);
    if (!isAsciiLetter(scheme.front()) || !std::all_of(scheme.begin(), scheme.end(), isSchemeChar)) {
        return std::nullopt;
    }
    return scheme;
}

bool NavigationPolicy::isQueriesScheme(std::string_view scheme) const {
    return std::find(queriesSchemes_.begin(), queriesSchemes_.end(), scheme) != queriesSchemes_.end();
}

}  // namespace tunelark
