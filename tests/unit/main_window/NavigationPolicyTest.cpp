#include "fakes/FakeDesktopServices.h"
#include "fakes/FakePageView.h"
#include "main_window/NavigationPolicy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tunelark {
namespace {

using test::FakePageView;
using test::FakeUrlOpener;

constexpr auto Allow = NavigationDecision::Allow;
constexpr auto Cancel = NavigationDecision::Cancel;

struct NavigationCase {
    const char* name;
    NavigationAction action;
    NavigationDecision decision;
    bool opened;
    std::vector<std::string> scripts;
};

TEST(NavigationPolicyTest, DecidesEachKindOfNavigation) {
    const std::string username = "username='Orvendel';";
    const std::vector<NavigationCase> cases = {
        {"initial page load", {false, "tunelark://app/index.html"}, Allow, false, {}},
        {"script-driven load of a tel link is not opened", {false, "tel:123"}, Allow, false, {}},
        {"script-driven calcUsername gets no answer", {false, "native://calcUsername"}, Allow, false, {}},
        {"tel link opens and stays allowed", {true, "tel:+4912345"}, Allow, true, {}},
        {"sms link opens", {true, "sms:5551234"}, Allow, true, {}},
        {"listed scheme opens", {true, "mailto:someone@example.org"}, Allow, true, {}},
        {"listed scheme compares case-sensitively", {true, "MAILTO:someone@example.org"}, Allow, false, {}},
        {"a scheme only prefixing a listed one is not listed", {true, "mail:x"}, Allow, false, {}},
        {"unlisted scheme is simply allowed", {true, "ftp://example.org/"}, Allow, false, {}},
        {"calcUsername answers and cancels", {true, "native://calcUsername"}, Cancel, false, {username}},
        {"calcUsername with more after it", {true, "native://calcUsername?x=1"}, Cancel, false, {username}},
        {"other native links are allowed", {true, "native://somethingElse"}, Allow, false, {}},
        {"calcUsername under another scheme", {true, "natives://calcUsername"}, Allow, false, {}},
        {"text without a scheme matches nothing", {true, "calcUsername"}, Allow, false, {}},
        {"page link inside the page", {true, "tunelark://app/index.html#about"}, Allow, false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakePageView page;
        FakeUrlOpener opener;
        NavigationPolicy policy(page, opener, {"mailto", "https"});
        EXPECT_EQ(policy.decide(c.action), c.decision);
        EXPECT_EQ(opener.opened, c.opened ? std::vector<std::string>{c.action.url} : std::vector<std::string>{});
        EXPECT_EQ(page.scripts, c.scripts);
    }
}

TEST(NavigationPolicyTest, WithoutSchemeListOnlySmsAndTelOpen) {
    FakePageView page;
    FakeUrlOpener opener;
    NavigationPolicy policy(page, opener, {});
    EXPECT_EQ(policy.decide({true, "mailto:a@b"}), Allow);
    EXPECT_EQ(policy.decide({true, "tel:1"}), Allow);
    EXPECT_EQ(opener.opened, std::vector<std::string>{"tel:1"});
}

TEST(NavigationPolicyTest, EveryFinishedLoadSwitchesTheContextMenuOff) {
    FakePageView page;
    FakeUrlOpener opener;
    NavigationPolicy policy(page, opener, {});
    policy.navigationFinished();
    policy.navigationFinished();
    const std::string off = "document.body.setAttribute('oncontextmenu', 'event.preventDefault();');";
    EXPECT_EQ(page.scripts, (std::vector<std::string>{off, off}));
}

TEST(NavigationPolicyTest, SchemeIsTheLeadingRunBeforeTheColon) {
    EXPECT_EQ(NavigationPolicy::schemeOf("tel:1"), "tel");
    EXPECT_EQ(NavigationPolicy::schemeOf("web+app-x.1:rest"), "web+app-x.1");
    EXPECT_EQ(NavigationPolicy::schemeOf(":nothing"), std::nullopt);
    EXPECT_EQ(NavigationPolicy::schemeOf("1tel:1"), std::nullopt);
    EXPECT_EQ(NavigationPolicy::schemeOf("path/with:colon"), std::nullopt);
    EXPECT_EQ(NavigationPolicy::schemeOf("\xc3\xa9t:1"), std::nullopt);
    EXPECT_EQ(NavigationPolicy::schemeOf(""), std::nullopt);
}

}  // namespace
}  // namespace tunelark
