#include "bridge/MainVC.h"
#include "fakes/FakeLyricsWindow.h"
#include "fakes/FakeMainQueue.h"
#include "lyrics_window/LyricsVC.h"
#include "lyrics_window/LyricsWC.h"
#include "lyrics_window/LyricsWindowSwitch.h"
#include "platform/gtk/ScreenCoordinates.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

constexpr Rect kInitialFrame{100, 200, 400, 40};

// The lyrics window as the page first turns it on: a main view, a store on a temporary file and a fake
// window behind the real controllers.
class LyricsWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("tl-lyrics-" + std::to_string(::getpid()) + "-" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
        store = std::make_unique<Store>((dir / "store.sqlite").string(), queue);
        mainView = std::make_unique<MainVC>(queue, nullptr);
        lyricsSwitch = std::make_unique<LyricsWindowSwitch>(
            [this] {
                ++windowsMade;
                auto made = std::make_unique<test::FakeLyricsWindow>(kInitialFrame);
                window = made.get();
                return made;
            },
            *store, [this] { ++mainWindowShows; });
    }
    void TearDown() override {
        lyricsSwitch.reset();
        mainView.reset();
        MainVC::shared = nullptr;
        store.reset();
        fs::remove_all(dir);
    }
    void storeSetting(const std::string& key, std::optional<std::string> value) {
        auto record = store->insertSettingsEntity();
        record->key = key;
        record->value = std::move(value);
        ASSERT_FALSE(store->saveNow().has_value());
    }
    void turnOn(const std::string& rows = "oneRow") { lyricsSwitch->turnLyricsOn("true", rows); }
    Rect frame() const { return window->currentFrame; }
    static double centreX(const Rect& r) { return r.x + r.width / 2; }

    fs::path dir;
    test::FakeMainQueue queue;
    std::unique_ptr<Store> store;
    std::unique_ptr<MainVC> mainView;
    std::unique_ptr<LyricsWindowSwitch> lyricsSwitch;
    test::FakeLyricsWindow* window = nullptr;
    int windowsMade = 0;
    int mainWindowShows = 0;
};

TEST_F(LyricsWindowTest, TakesAnchorsFromTheInitialFrameWithTheVerticalAnchorBelowTheBottomEdge) {
    turnOn();
    ASSERT_NE(LyricsWC::shared, nullptr);
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterXWindow, 300);
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterYWindow, 180);
    EXPECT_TRUE(window->visible);
}

TEST_F(LyricsWindowTest, TextsOfDifferentWidthsStayCentredOnTheAnchor) {
    turnOn();
    for (std::string text : {"short", "a much longer lyric line than before", ""}) {
        LyricsVC::shared->setLyricText(text);
        LabelSize size = window->naturalTextSize();
        EXPECT_EQ(frame(), (Rect{300 - size.width / 2, 180 + size.height / 2, size.width, size.height})) << text;
        EXPECT_EQ(window->text, text);
    }
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterXWindow, 300);
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterYWindow, 180);
}

TEST_F(LyricsWindowTest, TwoRowsUseTheirSizeAndATallerTextRaisesTheBottomEdgeByHalfTheGain) {
    turnOn();
    LyricsVC::shared->setLyricText("first line");
    EXPECT_DOUBLE_EQ(window->fontSize, 18);
    Rect oneRow = frame();

    lyricsSwitch->turnOneRowOrTow("towRows");
    LyricsVC::shared->twoRowsFontSize = 20;  // larger than one row, so the window surely grows
    LyricsVC::shared->setLyricText("first line\nsecond line");
    EXPECT_DOUBLE_EQ(window->fontSize, 20);
    Rect twoRows = frame();
    double gained = twoRows.height - oneRow.height;
    ASSERT_GT(gained, 0);
    EXPECT_DOUBLE_EQ(twoRows.y, oneRow.y + gained / 2);
    EXPECT_DOUBLE_EQ(centreX(twoRows), centreX(oneRow));

    // On X11, y grows downward: the bottom edge moves up by half the gain, the top by one and a half.
    const double screenBottom = 900;
    Rect x11OneRow = flipFrame(oneRow, screenBottom);
    Rect x11TwoRows = flipFrame(twoRows, screenBottom);
    EXPECT_DOUBLE_EQ(x11TwoRows.y + x11TwoRows.height, x11OneRow.y + x11OneRow.height - gained / 2);
    EXPECT_DOUBLE_EQ(x11TwoRows.y, x11OneRow.y - 1.5 * gained);
}

TEST_F(LyricsWindowTest, DragMovesTheWindowWithThePointerFromTheFrameAtThePress) {
    turnOn();
    LyricsVC::shared->setLyricText("line");
    // Something else moved the window since it was last placed: the press takes its frame as it is now.
    window->currentFrame = {500, 600, 80, 30};
    window->events->mouseDown(1000);
    window->events->mouseDragged(10, 5);   // right and down
    window->events->mouseDragged(-4, -20); // left and up
    EXPECT_EQ(frame(), (Rect{506, 615, 80, 30}));
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterXWindow, 546);
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterYWindow, 600);

    // The next text is placed around where the drag left the anchor.
    LyricsVC::shared->setLyricText("line");
    EXPECT_DOUBLE_EQ(centreX(frame()), 546);
}

TEST_F(LyricsWindowTest, DragEndsAtReleaseOrWhenTheWindowLosesFocus) {
    turnOn();
    for (bool byFocus : {false, true}) {
        window->events->mouseDown(1000 + (byFocus ? 10 : 0));
        if (byFocus)
            window->delegate->windowDidResignKey();
        else
            window->events->mouseUp();
        EXPECT_FALSE(LyricsWC::shared->isMoving);
        Rect before = frame();
        int sets = window->frameSets;
        window->events->mouseDragged(50, 50);
        EXPECT_EQ(frame(), before);
        EXPECT_EQ(window->frameSets, sets);
    }
}

TEST_F(LyricsWindowTest, SecondPressWithinThreeTenthsOfASecondShowsTheMainWindow) {
    turnOn();
    struct Case {
        double gap;
        int shows;
    };
    double now = 5000;
    for (Case c : {Case{0.29, 1}, Case{0.31, 0}, Case{0.30, 0}}) {
        mainWindowShows = 0;
        now += 10;
        window->events->mouseDown(now);
        window->events->mouseDown(now + c.gap);
        EXPECT_EQ(mainWindowShows, c.shows) << "gap " << c.gap;
    }
    // Three quick presses are two double presses.
    mainWindowShows = 0;
    window->events->mouseDown(6000);
    window->events->mouseDown(6000.1);
    window->events->mouseDown(6000.2);
    EXPECT_EQ(mainWindowShows, 2);
}

TEST_F(LyricsWindowTest, HoverGreyStaysAfterLeavingOnlyWithTheKeepFlag) {
    turnOn();
    for (bool keep : {false, true}) {
        LyricsVC::shared->keepBackgroundColor = keep;
        window->background = kClearColor;
        window->events->mouseEntered();
        EXPECT_EQ(window->background, kHoverGrey);
        window->events->mouseExited();
        EXPECT_EQ(window->background, keep ? kHoverGrey : kClearColor);
        LyricsVC::shared->setLyricText("later line");
        EXPECT_EQ(window->background, keep ? kHoverGrey : kClearColor);
    }
}

TEST_F(LyricsWindowTest, StyleIsLoadedOnceWithTheStoredReadingRules) {
    storeSetting("ONEROWFONTSIZE", "30");
    storeSetting("twoRowsFontSize", "abc");
    storeSetting("fontColor", "0.5,,0.2,0.1");
    storeSetting("keepBackgroundColor", "yes");
    storeSetting("oneRowFontSize", std::nullopt);
    turnOn();
    LyricsVC* vc = LyricsVC::shared;
    EXPECT_DOUBLE_EQ(vc->oneRowFontSize, 18);
    EXPECT_DOUBLE_EQ(vc->twoRowsFontSize, 18);
    EXPECT_EQ(vc->fontColor, (Rgb{0.5, 0.2, 0.1}));
    EXPECT_TRUE(vc->keepBackgroundColor);
    EXPECT_EQ(window->textColor, (Rgba{0.5, 0.2, 0.1, 1}));
    EXPECT_EQ(window->background, kHoverGrey);
    EXPECT_DOUBLE_EQ(window->fontSize, 13) << "the font waits for the first text";

    // Stored later: not read again while the window lives.
    storeSetting("oneRowFontSize", "40.00");
    lyricsSwitch->turnLyricsOn("false", "oneRow");
    turnOn();
    LyricsVC::shared->setLyricText("line");
    EXPECT_DOUBLE_EQ(window->fontSize, 18);
}

TEST_F(LyricsWindowTest, WithoutStoredStyleTheTextIsSystemGreyOnClear) {
    turnOn();
    EXPECT_EQ(window->textColor, opaque(kSystemGrey));
    EXPECT_EQ(window->background, kClearColor);
}

TEST_F(LyricsWindowTest, PreviewsKeepTheSizeButShowOnlyInTheirRowMode) {
    turnOn();
    LyricsVC::shared->setLyricText("line");
    const Rgb red{1, 0, 0};
    int sets = window->frameSets;
    LyricsVC::shared->tryTwoRowsFontSize(red, 40);
    EXPECT_DOUBLE_EQ(LyricsVC::shared->twoRowsFontSize, 40);
    EXPECT_DOUBLE_EQ(window->fontSize, 18);
    EXPECT_EQ(window->textColor, opaque(kSystemGrey));
    EXPECT_GT(window->frameSets, sets) << "still re-fitted and re-placed";

    LyricsVC::shared->tryOneRowFontSize(red, 30);
    EXPECT_DOUBLE_EQ(window->fontSize, 30);
    EXPECT_EQ(window->textColor, opaque(red));
    EXPECT_DOUBLE_EQ(frame().height, window->naturalTextSize().height);
    EXPECT_EQ(LyricsVC::shared->fontColor, kSystemGrey);
}

TEST_F(LyricsWindowTest, CloseOnlyHidesAndTheSameWindowComesBack) {
    turnOn();
    LyricsVC::shared->setLyricText("line");
    Rect placed = frame();
    EXPECT_TRUE(window->delegate->windowShouldClose());
    EXPECT_FALSE(window->visible);
    turnOn();
    EXPECT_TRUE(window->visible);
    EXPECT_EQ(windowsMade, 1);
    EXPECT_EQ(frame(), placed);
}

TEST_F(LyricsWindowTest, TurningOnFollowsTheExactTexts) {
    struct Case {
        const char* needOn;
        const char* rows;
        bool visibleAfter;
        int rowNumAfter;
    };
    // Each case starts with the window shown in one row.
    const Case cases[] = {
        {"true", "towRows", true, 2},   {"false", "oneRow", false, 1}, {"false", "towRows", false, 2},
        {"TRUE", "TOWROWS", true, 1},   {"true", "twoRows", true, 1},  {"FALSE", "oneRow", true, 1},
        {"", "", true, 1},
    };
    turnOn();
    for (const Case& c : cases) {
        lyricsSwitch->turnLyricsOn("true", "oneRow");
        lyricsSwitch->turnLyricsOn(c.needOn, c.rows);
        EXPECT_EQ(window->visible, c.visibleAfter) << c.needOn << " " << c.rows;
        EXPECT_EQ(mainView->displayingRowNum, c.rowNumAfter) << c.needOn << " " << c.rows;
    }
    EXPECT_EQ(windowsMade, 1);
}

TEST_F(LyricsWindowTest, HidingBeforeTheWindowExistsMakesNoneButSetsTheRows) {
    lyricsSwitch->turnLyricsOn("false", "towRows");
    EXPECT_EQ(windowsMade, 0);
    EXPECT_EQ(LyricsWC::shared, nullptr);
    EXPECT_EQ(mainView->displayingRowNum, 2);
    lyricsSwitch->turnOneRowOrTow("oneRow");
    EXPECT_EQ(mainView->displayingRowNum, 1);
    setSharedLyricText("no window yet");  // the clock's sink does nothing without a window
    EXPECT_EQ(windowsMade, 0);
}

TEST_F(LyricsWindowTest, WithoutTheMainViewNothingIsMade) {
    mainView.reset();
    MainVC::shared = nullptr;
    turnOn("towRows");
    EXPECT_EQ(windowsMade, 0);
    EXPECT_EQ(LyricsVC::shared, nullptr);
}

}  // namespace
}  // namespace tunelark
