#include "fakes/FakeMainWindow.h"
#include "main_window/MainWC.h"
#include "platform/gtk/ScreenCoordinates.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace tunelark {
namespace {

using test::FakeMainWindow;
using test::FakeScreens;

// A laptop screen with a 25-point menu bar at the top, as the core sees it (origin bottom left).
const Screen kLaptop{{0, 0, 1440, 900}, {0, 0, 1440, 875}};
// A second monitor to the right, with a panel along its bottom.
const Screen kRightMonitor{{1440, 0, 1920, 1080}, {1440, 40, 1920, 1040}};

struct Fixture {
    FakeMainWindow window;
    FakeScreens screens;
    std::vector<int> exits;
    bool visibleAtExit = true;
    MainWC controller{window, screens, [this](int status) {
                          exits.push_back(status);
                          visibleAtExit = window.isVisible();
                      }};

    void showAt(const Rect& frame) {
        window.currentFrame = frame;
        window.show();
    }
};

struct ToggleCase {
    const char* name;
    std::vector<Screen> screens;
    Point pointer;
    Rect before;
    Rect expected;
};

TEST(MainWCTest, MaxMinToggleChoosesBetweenFillingAndRestoring) {
    const std::vector<ToggleCase> cases = {
        {"normal window fills the visible frame", {kLaptop}, {700, 400}, {120, 150, 1200, 600}, {0, 0, 1440, 875}},
        {"filled window restores centred", {kLaptop}, {700, 400}, {0, 0, 1440, 875}, {120, 150, 1200, 600}},
        {"enlarged beyond the visible frame restores", {kLaptop}, {10, 10}, {0, 0, 1500, 950}, {120, 150, 1200, 600}},
        {"wide but low window maximises", {kLaptop}, {10, 10}, {0, 0, 1500, 600}, {0, 0, 1440, 875}},
        {"narrow but tall window maximises", {kLaptop}, {10, 10}, {0, 0, 1200, 900}, {0, 0, 1440, 875}},
        {"pointer off every screen targets 1024x768", {kLaptop}, {-5, 10}, {120, 150, 1200, 600}, {0, 0, 1024, 768}},
        {"no screens at all targets 1024x768", {}, {10, 10}, {0, 0, 1000, 700}, {0, 0, 1024, 768}},
        {"pointer on the second monitor fills that one", {kLaptop, kRightMonitor}, {2000, 500},
         {1500, 100, 1200, 600}, {1440, 40, 1920, 1040}},
        {"restore centres on the main screen, not the pointer's", {kLaptop, kRightMonitor}, {2000, 500},
         {1440, 40, 1920, 1040}, {120, 150, 1200, 600}},
        {"right edge of a screen belongs to the next one", {kLaptop, kRightMonitor}, {1440, 500},
         {0, 0, 1440, 875}, {1440, 40, 1920, 1040}},
        {"main screen origin is not added when restoring", {{{-200, 100, 1440, 900}, {-200, 100, 1440, 875}}},
         {0, 500}, {-200, 100, 1440, 875}, {120, 150, 1200, 600}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Fixture f;
        f.screens.screens = c.screens;
        f.screens.pointer = c.pointer;
        f.showAt(c.before);
        f.controller.changeMaxMin();
        ASSERT_EQ(f.window.frames.size(), 1u);
        EXPECT_EQ(f.window.frames.back(), c.expected);
    }
}

TEST(MainWCTest, TwoTogglesReturnToTheCentredNormalFrame) {
    Fixture f;
    f.screens.screens = {kLaptop};
    f.screens.pointer = {100, 100};
    f.showAt(MainWC::restoredFrame(f.screens.screens));
    EXPECT_EQ(f.window.frame(), (Rect{120, 150, 1200, 600}));
    f.controller.changeMaxMin();
    f.controller.changeMaxMin();
    EXPECT_EQ(f.window.frames, (std::vector<Rect>{{0, 0, 1440, 875}, {120, 150, 1200, 600}}));
}

TEST(MainWCTest, ClosingHidesTheWindowThenEndsWithStatusZero) {
    Fixture f;
    f.showAt({120, 150, 1200, 600});
    f.controller.windowShouldClose();
    EXPECT_EQ(f.exits, std::vector<int>{0});
    EXPECT_FALSE(f.visibleAtExit);
    EXPECT_EQ(f.window.hideCount, 1);
}

TEST(MainWCTest, ShowWindowWaitsUntilThePageGaveTheWindowItsSize) {
    Fixture f;
    f.controller.showWindow();
    EXPECT_EQ(f.window.showCount, 0);
    f.showAt({120, 150, 1200, 600});
    f.window.hide();
    f.controller.showWindow();
    EXPECT_EQ(f.window.showCount, 2);
    EXPECT_TRUE(f.window.isVisible());
}

TEST(MainWCTest, DragStartsOnlyFromARecordedPress) {
    Fixture f;
    f.controller.startMoveWindow();
    EXPECT_EQ(f.window.dragsStarted, 0);
    f.window.hasLastPress = true;
    f.controller.startMoveWindow();
    EXPECT_EQ(f.window.dragsStarted, 1);
}

TEST(MainWCTest, SharedSlotHoldsTheNewestController) {
    Fixture first;
    std::optional<Fixture> second;
    second.emplace();
    EXPECT_EQ(MainWC::shared, &second->controller);
}

TEST(ScreenCoordinatesTest, MirrorsAboutTheMainScreenBottom) {
    // A 1200x600 window 150 pixels below the top of a 900-pixel-high main screen sits 150 above its bottom.
    EXPECT_EQ(flipFrame({120, 150, 1200, 600}, 900), (Rect{120, 150, 1200, 600}));
    EXPECT_EQ(flipFrame({0, 0, 1440, 25}, 900), (Rect{0, 875, 1440, 25}));
    // A monitor below the main one has negative core y; one that starts lower in X11 moves the axis.
    EXPECT_EQ(flipFrame({0, 900, 1920, 1080}, 900), (Rect{0, -1080, 1920, 1080}));
    EXPECT_EQ(flipFrame({10, 300, 100, 50}, 1200), (Rect{10, 850, 100, 50}));
    const Rect any{33, 44, 55, 66};
    EXPECT_EQ(flipFrame(flipFrame(any, 777), 777), any);
    EXPECT_EQ(flipPoint({5, 0}, 900), (Point{5, 900}));
    EXPECT_EQ(flipPoint({5, 899}, 900), (Point{5, 1}));
}

}  // namespace
}  // namespace tunelark
