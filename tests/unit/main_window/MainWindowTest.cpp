#include "TempDir.h"
#include "fakes/FakeDesktopServices.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakeMainWindow.h"
#include "fakes/FakePageView.h"
#include "main_window/MainWC.h"
#include "main_window/NavigationPolicy.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

using Texts = std::vector<std::string>;

// What a main window controller is made with besides its window and screens.
struct PageSide {
    test::TempDir dir;
    test::FakeMainQueue queue;
    Store store{dir.file("Tunelark.sqlite"), queue};
    PageState page;
    MainVC view{queue, nullptr, page};
    PlayList playList{store, queue, view};
};

struct MaxMinCase {
    std::vector<Screen> screens;
    Point pointer;
    Rect before;
    bool windowManager, maximized;
    std::vector<Rect> frames;         // what the toggle did: frames set,
    int maximizeRequests;             // maximise requests,
    std::vector<Rect> unmaximizedTo;  // and unmaximise requests with their restored frame
};

void checkMaxMin(const MaxMinCase& c) {
    test::FakeMainWindow window;
    test::FakeScreens screens;
    screens.screens = c.screens;
    screens.pointer = c.pointer;
    window.currentFrame = c.before;
    window.windowManager = c.windowManager;
    window.maximized = c.maximized;
    window.show();
    PageSide side;
    MainWC(window, screens, side.page, side.playList, [](int) {}).changeMaxMin();
    const auto where = ::testing::Message() << "window at " << c.before.x << "," << c.before.y << " " << c.before.width
                                            << "x" << c.before.height << (c.windowManager ? " with" : " without")
                                            << " a window manager" << (c.maximized ? ", maximised" : "");
    EXPECT_EQ(window.frames, c.frames) << where;
    EXPECT_EQ(window.maximizeRequests, c.maximizeRequests) << where;
    EXPECT_EQ(window.unmaximizedTo, c.unmaximizedTo) << where;
}

// Core coordinates (origin bottom left): a laptop with a bar at the top, a monitor to its right with a panel.
const Screen laptop{{0, 0, 1440, 900}, {0, 0, 1440, 875}}, right{{1440, 0, 1920, 1080}, {1440, 40, 1920, 1040}};
const Rect full{0, 0, 1440, 875}, normal{120, 137.5, 1200, 600}, rightNormal{1800, 260, 1200, 600};

TEST(MainWCTest, WithoutAWindowManagerTheToggleSetsTheMaximisedOrTheCentredNormalFrameItself) {
    const MaxMinCase cases[] = {
        {{laptop}, {700, 400}, normal, false, false, {full}, 0, {}},
        {{laptop}, {700, 400}, full, false, false, {normal}, 0, {}},
        {{laptop}, {10, 10}, {0, 0, 1500, 950}, false, false, {normal}, 0, {}},  // larger than the visible frame
        {{laptop}, {10, 10}, {0, 0, 1500, 600}, false, false, {full}, 0, {}},
        {{laptop}, {10, 10}, {0, 0, 1200, 900}, false, false, {full}, 0, {}},
        {{laptop}, {-5, 10}, normal, false, false, {MainWC::kFallbackTarget}, 0, {}},
        {{}, {10, 10}, {0, 0, 1000, 700}, false, false, {MainWC::kFallbackTarget}, 0, {}},
        {{}, {10, 10}, {0, 0, 1100, 800}, false, false, {{-88, 84, 1200, 600}}, 0, {}},
        {{laptop, right}, {2000, 500}, {1500, 100, 1200, 600}, false, false, {right.visibleFrame}, 0, {}},
        // Restored on the screen that holds the window, wherever that screen lies.
        {{laptop, right}, {2000, 500}, right.visibleFrame, false, false, {rightNormal}, 0, {}},
        // A screen's right edge belongs to the next screen.
        {{laptop, right}, {1440, 500}, full, false, false, {right.visibleFrame}, 0, {}},
        {{{{-200, 100, 1440, 900}, {-200, 100, 1440, 875}}}, {0, 500}, {-200, 100, 1440, 875}, false, false,
         {{-80, 237.5, 1200, 600}}, 0, {}},
        {{laptop, right}, {500, 500}, {-3000, 0, 3000, 2000}, false, false, {normal}, 0, {}}};  // off every screen
    for (const auto& c : cases) checkMaxMin(c);
}

TEST(MainWCTest, WithAWindowManagerTheToggleFollowsItsMaximisedState) {
    const Rect offByDecorations{26, 23, 1388, 823};  // as one compositing manager reports a maximised window
    const MaxMinCase cases[] = {
        {{laptop}, {700, 400}, normal, true, false, {}, 1, {}},
        {{laptop}, {700, 400}, full, true, true, {}, 0, {normal}},
        {{laptop}, {700, 400}, offByDecorations, true, true, {}, 0, {normal}},  // maximised by the header bar
        {{laptop, right}, {2000, 500}, right.visibleFrame, true, true, {}, 0, {rightNormal}},
        {{laptop}, {700, 400}, {0, 0, 1500, 950}, true, false, {normal}, 0, {}}};  // the user made it that large
    for (const auto& c : cases) checkMaxMin(c);
}

TEST(MainWCTest, ClosingHidesTheWindowThenEndsTheProcessWithStatusZero) {
    test::FakeMainWindow window;
    std::vector<std::pair<int, bool>> exits;
    window.show();
    PageSide side;
    test::FakeScreens screens;
    MainWC(window, screens, side.page, side.playList, [&](int s) { exits.emplace_back(s, window.isVisible()); })
        .windowShouldClose();
    EXPECT_EQ(exits, (std::vector<std::pair<int, bool>>{{0, false}}));
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
