#include "fakes/FakeDesktopServices.h"
#include "fakes/FakeMainWindow.h"
#include "fakes/FakePageView.h"
#include "main_window/MainWC.h"
#include "main_window/NavigationPolicy.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

using Texts = std::vector<std::string>;

TEST(MainWCTest, MaxMinToggleFillsTheScreenUnderThePointerOrRestoresCentredOnTheMainScreen) {
    // Core coordinates (origin bottom left): a laptop with a bar at the top, a monitor to its right with a panel.
    const Screen laptop{{0, 0, 1440, 900}, {0, 0, 1440, 875}}, right{{1440, 0, 1920, 1080}, {1440, 40, 1920, 1040}};
    const Rect full{0, 0, 1440, 875}, normal{120, 150, 1200, 600}, fallback{0, 0, 1024, 768};
    struct Case { std::vector<Screen> screens; Point pointer; Rect before, after; };
    const Case cases[] = {
        {{laptop}, {700, 400}, normal, full}, {{laptop}, {700, 400}, full, normal},
        {{laptop}, {10, 10}, {0, 0, 1500, 950}, normal},  // larger than the visible frame
        {{laptop}, {10, 10}, {0, 0, 1500, 600}, full}, {{laptop}, {10, 10}, {0, 0, 1200, 900}, full},
        {{laptop}, {-5, 10}, normal, fallback}, {{}, {10, 10}, {0, 0, 1000, 700}, fallback},
        {{laptop, right}, {2000, 500}, {1500, 100, 1200, 600}, right.visibleFrame},
        {{laptop, right}, {2000, 500}, right.visibleFrame, normal},
        {{laptop, right}, {1440, 500}, full, right.visibleFrame},  // a right edge belongs to the next screen
        {{{{-200, 100, 1440, 900}, {-200, 100, 1440, 875}}}, {0, 500}, {-200, 100, 1440, 875}, normal}};
    for (const auto& c : cases) {
        test::FakeMainWindow window;
        test::FakeScreens screens;
        screens.screens = c.screens;
        screens.pointer = c.pointer;
        window.currentFrame = c.before;
        window.show();
        MainWC(window, screens, [](int) {}).changeMaxMin();
        EXPECT_EQ(window.frames, std::vector<Rect>{c.after}) << c.before.x << "," << c.before.width;
    }
    test::FakeMainWindow window;
    std::vector<std::pair<int, bool>> exits;
    window.show();
    MainWC(window, test::FakeScreens(), [&](int s) { exits.emplace_back(s, window.isVisible()); }).windowShouldClose();
    EXPECT_EQ(exits, (std::vector<std::pair<int, bool>>{{0, false}})) << "closing hides the window, then ends with 0";
}

TEST(NavigationPolicyTest, DecidesEachKindOfNavigationAndSwitchesTheContextMenuOffAfterEachLoad) {
    constexpr auto Allow = NavigationDecision::Allow, Cancel = NavigationDecision::Cancel;
    const Texts none, username{"username='Orvendel';"};
    struct Case { NavigationAction action; NavigationDecision decision; bool opened; Texts scripts; };
    const Case cases[] = {
        {{false, "tunelark://app/index.html"}, Allow, false, none},
        {{false, "tel:123"}, Allow, false, none},  // script-driven loads open nothing and get no answer
        {{false, "native://calcUsername"}, Allow, false, none}, {{true, "tel:+4912345"}, Allow, true, none},
        {{true, "sms:5551234"}, Allow, true, none}, {{true, "mailto:a@example.org"}, Allow, true, none},
        {{true, "MAILTO:a@example.org"}, Allow, false, none}, {{true, "mail:x"}, Allow, false, none},
        {{true, "ftp://example.org/"}, Allow, false, none}, {{true, "native://calcUsername"}, Cancel, false, username},
        {{true, "native://calcUsername?x=1"}, Cancel, false, username}, {{true, "native://other"}, Allow, false, none},
        {{true, "natives://calcUsername"}, Allow, false, none}, {{true, "calcUsername"}, Allow, false, none}};
    for (const auto& c : cases) {
        test::FakePageView page;
        test::FakeUrlOpener opener;
        NavigationPolicy policy(page, opener, {"mailto", "https"});
        EXPECT_EQ(policy.decide(c.action), c.decision) << c.action.url;
        EXPECT_EQ(opener.opened, c.opened ? Texts{c.action.url} : none) << c.action.url;
        EXPECT_EQ(page.scripts, c.scripts) << c.action.url;
        policy.navigationFinished();
        EXPECT_EQ(page.scripts.back(), "document.body.setAttribute('oncontextmenu', 'event.preventDefault();');");
    }
}

}  // namespace
}  // namespace tunelark
