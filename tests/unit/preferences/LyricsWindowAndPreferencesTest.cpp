#include "page/PageState.h"
#include "fakes/FakeLyricsWindow.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePreferencesWindow.h"
#include "lyrics_window/LyricsVC.h"
#include "lyrics_window/LyricsWC.h"
#include "lyrics_window/LyricsWindowSwitch.h"
#include "preferences/PreferencesOpener.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <map>

namespace tunelark {
namespace {

// The lyrics window's real controllers over a fake window first framed at {100, 200, 400, 40}, and a store on
// a temporary file. Its tests live with the preferences', whose previews and reverts act on the same window.
class LyricsWindowTest : public ::testing::Test {
protected:
    Rect frame() const { return window->currentFrame; }

    test::TempDir dir;
    test::FakeMainQueue queue;
    Store store{dir.file("store.sqlite"), queue};
    PageState pageState;
    test::FakeLyricsWindow* window = nullptr;
    int mainWindowShows = 0;
    LyricsWindowSwitch lyricsSwitch{[this] {
                                        auto made = std::make_unique<test::FakeLyricsWindow>(Rect{100, 200, 400, 40});
                                        window = made.get();
                                        return made;
                                    },
                                    store, pageState, [this] { ++mainWindowShows; }};
};

TEST_F(LyricsWindowTest, TakesTheStoredStyleAndCentresTextOnTheAnchorBelowTheFirstFrameAndTwoRowsGrowUpward) {
    for (auto [key, value] : {std::pair{"fontColor", "0.5,,0.2,0.1"}, {"keepBackgroundColor", "yes"}})
        *store.insertSettingsEntity() = {key, value};
    ASSERT_FALSE(store.saveNow().has_value());
    lyricsSwitch.turnLyricsOn("true", "oneRow");
    EXPECT_EQ(window->textColor, (Rgba{0.5, 0.2, 0.1, 1})) << "stored values are read by their rules";
    EXPECT_EQ(window->background, kHoverGrey);
    LyricsVC::shared->setLyricText("a lyric line");
    LabelSize size = window->naturalTextSize();
    EXPECT_EQ(frame(), (Rect{300 - size.width / 2, 180 + size.height / 2, size.width, size.height}));
    Rect oneRow = frame();
    lyricsSwitch.setRowMode("towRows");
    LyricsVC::shared->setLyricText("a much longer first line\nsecond");
    double gained = frame().height - oneRow.height;
    ASSERT_GT(gained, 0);
    EXPECT_DOUBLE_EQ(frame().y, oneRow.y + gained / 2) << "the bottom edge rises by half the gain";
    EXPECT_DOUBLE_EQ(frame().x + frame().width / 2, 300);
}

TEST_F(LyricsWindowTest, DragMovesFromTheFrameAtThePressUntilReleaseOrFocusLossAndADoublePressShowsTheMain) {
    lyricsSwitch.turnLyricsOn("true", "oneRow");
    window->currentFrame = {500, 600, 80, 30};  // moved by something else since it was placed
    window->events->mouseDown(1000);
    window->events->mouseDragged(10, 5);
    window->events->mouseDragged(-4, -20);
    EXPECT_EQ(frame(), (Rect{506, 615, 80, 30}));
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterXWindow, 546);
    EXPECT_DOUBLE_EQ(LyricsWC::shared->movingCenterYWindow, 600);
    for (bool byFocus : {false, true}) {
        window->events->mouseDown(byFocus ? 1020 : 1010);
        byFocus ? window->delegate->windowDidResignKey() : window->events->mouseUp();
        window->events->mouseDragged(50, 50);
        EXPECT_EQ(frame(), (Rect{506, 615, 80, 30})) << byFocus;
    }
    for (double second : {2000.0, 2000.29, 2010.0, 2010.31, 2020.0, 2020.1, 2020.2}) window->events->mouseDown(second);
    EXPECT_EQ(mainWindowShows, 3) << "within 0.3 s only; three quick presses are two double presses";
}

using Settings = std::map<std::string, std::string>;

// The preferences opened while the lyrics window shows a line in one row.
class PreferencesTest : public LyricsWindowTest {
protected:
    PreferencesTest() {
        lyricsSwitch.turnLyricsOn("true", "oneRow");
        LyricsVC::shared->setLyricText("a lyric line");
        opener.open();
    }
    void poll() { queue.advance(std::chrono::milliseconds(100)); }
    Settings stored() {  // as a fresh store on the same file reads them
        Settings found;
        auto records = Store(dir.file("store.sqlite"), queue).fetchSettingsEntities();
        for (auto& record : records.value()) found[record->key.value_or("")] = record->value.value_or("");
        return found;
    }

    test::FakePreferencesWindow* prefs = nullptr;
    PreferencesOpener opener{[this] {
                                 auto made = std::make_unique<test::FakePreferencesWindow>();
                                 prefs = made.get();
                                 return made;
                             },
                             store, queue};
};

TEST_F(PreferencesTest, FieldsTakeOnlyBeginningsOfDecimalsAndThePollClampsWithoutRewritingThem) {
    for (const char* text : {"", "0", "0.", ".", ".5", "12.", "12.75"}) EXPECT_TRUE(prefs->filters[1](text)) << text;
    for (const char* text : {"01", "-3", "1e2", "1,5", " 12", "1.2.3", "0x1", "12\n", "１２"})
        EXPECT_FALSE(prefs->filters[0](text)) << text;
    for (auto [typed, trying] : std::initializer_list<std::pair<const char*, double>>{
             {"30", 30}, {"5", 10}, {"250", 100}, {".", 18}, {"", 18}, {".7", 10}, {"100", 100}}) {
        prefs->texts[0] = typed;
        poll();
        EXPECT_DOUBLE_EQ(window->fontSize, trying) << typed;
    }
    EXPECT_EQ(prefs->fieldWrites[0], 1) << "written once, when opened";
}

TEST_F(PreferencesTest, CancelAndCloseRevertTheLyricsWindowAndStoreNothing) {
    for (bool byCloseButton : {false, true}) {
        if (byCloseButton) opener.open();
        prefs->texts[0] = "30";
        prefs->wellColor = {1, 0, 0, 1};
        poll();
        prefs->actions->clickedKeepBackgroundColor(true);
        ASSERT_DOUBLE_EQ(window->fontSize, 30);
        byCloseButton ? prefs->close() : prefs->actions->clickCancel();
        EXPECT_EQ(queue.liveTimers(), 0);
        EXPECT_DOUBLE_EQ(window->fontSize, 18);
        EXPECT_EQ(window->textColor, opaque(kSystemGrey));
        LyricsVC::shared->setLyricText("next line");
        EXPECT_EQ(window->background, kClearColor);
        EXPECT_TRUE(stored().empty());
    }
}

TEST_F(PreferencesTest, ConfirmInsertsTheFourKeysThenUpdatesTheSameFour) {
    prefs->texts[0] = "5";
    prefs->wellColor = {1, 0.5, 0, 1};
    prefs->checkBox = true;
    poll();
    prefs->actions->clickConfirm();
    queue.drain();
    Settings expected{{"oneRowFontSize", "10.00"}, {"twoRowsFontSize", "14.00"},
                      {"fontColor", "1.000000,0.500000,0.000000"}, {"keepBackgroundColor", "true"}};
    EXPECT_EQ(stored(), expected);
    EXPECT_DOUBLE_EQ(window->fontSize, 10) << "closing re-applies the confirmed values";

    opener.open();
    prefs->actions->clickOneRowDefault();
    prefs->checkBox = false;
    poll();
    prefs->actions->clickConfirm();
    queue.drain();
    EXPECT_EQ(Store(dir.file("store.sqlite"), queue).fetchSettingsEntities()->size(), 4u) << "updated, not inserted";
    expected["oneRowFontSize"] = "18.00", expected["keepBackgroundColor"] = "false";
    EXPECT_EQ(stored(), expected);
}

}  // namespace
}  // namespace tunelark
