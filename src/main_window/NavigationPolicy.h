#pragma once
#include "platform/Dialogs.h"
#include "platform/PageView.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tunelark {

// What the page may navigate to, and what runs in it after each finished load. Main thread only.
class NavigationPolicy {
public:
    // Switches off the web view's context menu.
    static constexpr std::string_view kContextMenuSwitchOff =
        "document.body.setAttribute('oncontextmenu', 'event.preventDefault();');";
    // Answers the page's "native://calcUsername" link.
    static constexpr std::string_view kUsernameScript = "username='Orvendel';";

    // queriesSchemes: the URL schemes that page links may open in other applications.
    NavigationPolicy(PageView& page, UrlOpener& opener, std::vector<std::string> queriesSchemes);

    NavigationDecision decide(const NavigationAction& action);
    // Any page load has completed.
    void navigationFinished();

    // The scheme of an absolute URL text ("tel" for "tel:123"), or nothing when it has none.
    static std::optional<std::string_view> schemeOf(std::string_view url);

private:
    bool isQueriesScheme(std::string_view scheme) const;

    PageView& page_;
    UrlOpener& opener_;
    std::vector<std::string> queriesSchemes_;
};

}  // namespace tunelark
