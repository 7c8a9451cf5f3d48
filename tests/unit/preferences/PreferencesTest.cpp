#include "bridge/MainVC.h"
#include "fakes/FakeLyricsWindow.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePreferencesWindow.h"
#include "lyrics_window/LyricsVC.h"
#include "lyrics_window/LyricsWindowSwitch.h"
#include "preferences/PreferenceVC.h"
#include "preferences/PreferenceWC.h"
#include "preferences/PreferencesOpener.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <unistd.h>

namespace tunelark {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

// The preferences opened from the menu while the lyrics window is shown in one row, with a store on a
// temporary file.
class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("tl-prefs-" + std::to_string(::getpid()) + "-" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
        path = (dir / "store.sqlite").string();
        store = std::make_unique<Store>(path, queue);
        mainView = std::make_unique<MainVC>(queue, nullptr);
        lyricsSwitch = std::make_unique<LyricsWindowSwitch>(
            [this] {
                auto made = std::make_unique<test::FakeLyricsWindow>(Rect{100, 100, 300, 30});
                lyricsWindow = made.get();
                return made;
            },
            *store, [] {});
        opener = std::make_unique<PreferencesOpener>(
            [this] {
                ++windowsMade;
                auto made = std::make_unique<test::FakePreferencesWindow>();
                prefs = made.get();
                return made;
            },
            *store, queue);
    }
    void TearDown() override {
        opener.reset();
        lyricsSwitch.reset();
        mainView.reset();
        MainVC::shared = nullptr;
        store.reset();
        fs::remove_all(dir);
    }
    void showLyrics() {
        lyricsSwitch->turnLyricsOn("true", "oneRow");
        LyricsVC::shared->setLyricText("a lyric line");
    }
    void storeSetting(const std::string& key, const std::string& value) {
        auto record = store->insertSettingsEntity();
        record->key = key;
        record->value = value;
        ASSERT_FALSE(store->saveNow().has_value());
    }
    void poll() { queue.advance(milliseconds(100)); }
    PreferenceVC& vc() { return *PreferenceVC::shared; }
    std::map<std::string, std::string> storedSettings() {
        return settingsIn(*store);
    }
    static std::map<std::string, std::string> settingsIn(Store& from) {
        std::map<std::string, std::string> found;
        auto records = from.fetchSettingsEntities();
        for (auto& record : records.value()) found[record->key.value_or("")] = record->value.value_or("");
        return found;
    }

    fs::path dir;
    std::string path;
    test::FakeMainQueue queue;
    std::unique_ptr<Store> store;
    std::unique_ptr<MainVC> mainView;
    std::unique_ptr<LyricsWindowSwitch> lyricsSwitch;
    std::unique_ptr<PreferencesOpener> opener;
    test::FakeLyricsWindow* lyricsWindow = nullptr;
    test::FakePreferencesWindow* prefs = nullptr;
    int windowsMade = 0;
};

TEST_F(PreferencesTest, OpensWithTheStoredValuesAndOnlyOnce) {
    storeSetting("oneRowFontSize", "24.5");
    storeSetting("fontColor", "1,0,0");
    storeSetting("keepBackgroundColor", "true");
    opener->open();
    EXPECT_EQ(prefs->texts[0], "24.50");
    EXPECT_EQ(prefs->texts[1], "14.00");
    EXPECT_EQ(prefs->wellColor, (Rgba{1, 0, 0, 1}));
    EXPECT_TRUE(prefs->checkBox);
    EXPECT_DOUBLE_EQ(vc().currentOneRowFontSize, 24.5);
    EXPECT_DOUBLE_EQ(vc().tryingOneRowFontSize, 24.5);
    EXPECT_EQ(vc().tryingFontColor, (Rgb{1, 0, 0}));
    EXPECT_EQ(vc().defaultFontColor, kSystemGrey);

    opener->open();
    EXPECT_EQ(windowsMade, 1);
    EXPECT_EQ(prefs->showCount, 2);
    EXPECT_EQ(queue.liveTimers(), 1);
}

TEST_F(PreferencesTest, PollClampsTheTypedSizeAndNeverRewritesTheField) {
    showLyrics();
    opener->open();
    struct Case {
        const char* typed;
        double trying;
    };
    for (Case c : {Case{"30", 30}, Case{"5", 10}, Case{"250", 100}, Case{".", 18}, Case{"", 18}, Case{".7", 10},
                   Case{"100", 100}, Case{"10", 10}}) {
        prefs->texts[0] = c.typed;
        int writes = prefs->fieldWrites[0];
        poll();
        EXPECT_DOUBLE_EQ(vc().tryingOneRowFontSize, c.trying) << c.typed;
        EXPECT_DOUBLE_EQ(lyricsWindow->fontSize, c.trying) << c.typed;
        EXPECT_EQ(prefs->texts[0], c.typed);
        EXPECT_EQ(prefs->fieldWrites[0], writes);
    }
}

TEST_F(PreferencesTest, PollPreviewsOnlyChangesAboveOneHundredth) {
    showLyrics();
    opener->open();
    prefs->texts[0] = "18.009";
    prefs->texts[1] = "14.005";
    poll();
    EXPECT_DOUBLE_EQ(LyricsVC::shared->oneRowFontSize, 18);
    EXPECT_DOUBLE_EQ(LyricsVC::shared->twoRowsFontSize, 14);
    prefs->texts[1] = "14.02";
    poll();
    EXPECT_DOUBLE_EQ(LyricsVC::shared->twoRowsFontSize, 14.02);
    EXPECT_DOUBLE_EQ(lyricsWindow->fontSize, 18) << "two rows are not shown";
}

TEST_F(PreferencesTest, PickedColourIsPreviewedWithoutChangingTheLoadedColour) {
    showLyrics();
    opener->open();
    prefs->wellColor = {0, 0.5, 1, 1};
    poll();
    EXPECT_EQ(vc().tryingFontColor, (Rgb{0, 0.5, 1}));
    EXPECT_EQ(lyricsWindow->textColor, (Rgba{0, 0.5, 1, 1}));
    EXPECT_EQ(LyricsVC::shared->fontColor, kSystemGrey);

    prefs->wellColor = {2, 0, 0, 1};  // no sRGB equivalent
    poll();
    EXPECT_EQ(vc().tryingFontColor, (Rgb{0, 0.5, 1}));
}

TEST_F(PreferencesTest, KeystrokesThatBreakTheNumberAreRefused) {
    opener->open();
    EXPECT_EQ(prefs->retype(SizeField::OneRow, "07"), 1);
    EXPECT_EQ(prefs->texts[0], "0");
    EXPECT_EQ(prefs->retype(SizeField::TwoRows, "1-2.5.x"), 3);
    EXPECT_EQ(prefs->texts[1], "12.5");
}

TEST_F(PreferencesTest, SizeAndColourButtonsShowAndPreviewTheirValues) {
    storeSetting("oneRowFontSize", "26.00");
    storeSetting("twoRowsFontSize", "16.00");
    storeSetting("fontColor", "0,1,0");
    showLyrics();
    opener->open();
    prefs->texts[0] = "40";
    poll();

    prefs->actions->clickOneRowDefault();
    EXPECT_EQ(prefs->texts[0], "18.00");
    EXPECT_DOUBLE_EQ(lyricsWindow->fontSize, 18);
    prefs->actions->clickOneRowReset();
    EXPECT_EQ(prefs->texts[0], "26.00");
    EXPECT_DOUBLE_EQ(lyricsWindow->fontSize, 26);
    prefs->actions->clickTwoRowDefault();
    EXPECT_EQ(prefs->texts[1], "14.00");
    EXPECT_DOUBLE_EQ(LyricsVC::shared->twoRowsFontSize, 14);
    prefs->actions->clickTwoRowsReset();
    EXPECT_EQ(prefs->texts[1], "16.00");
    EXPECT_DOUBLE_EQ(vc().tryingTwoRowsFontSize, 16);

    prefs->actions->clickColorDefault();
    EXPECT_EQ(prefs->wellColor, opaque(kSystemGrey));
    EXPECT_EQ(lyricsWindow->textColor, opaque(kSystemGrey));
    prefs->actions->clickColorReset();
    EXPECT_EQ(prefs->wellColor, (Rgba{0, 1, 0, 1}));
    EXPECT_EQ(lyricsWindow->textColor, (Rgba{0, 1, 0, 1}));

    int frames = lyricsWindow->frameSets;
    poll();
    EXPECT_EQ(lyricsWindow->frameSets, frames) << "after a button the poll finds nothing new";
}

TEST_F(PreferencesTest, CheckBoxPreviewsTheBackgroundAndSaysSo) {
    showLyrics();
    opener->open();
    testing::internal::CaptureStdout();
    prefs->checkBox = true;
    prefs->actions->clickedKeepBackgroundColor(true);
    prefs->checkBox = false;
    prefs->actions->clickedKeepBackgroundColor(false);
    prefs->checkBox = true;
    prefs->actions->clickedKeepBackgroundColor(true);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "tryingKeepBackgroundColor::true\ntryingKeepBackgroundColor::false\ntryingKeepBackgroundColor::true\n");
    EXPECT_TRUE(LyricsVC::shared->keepBackgroundColor);
    EXPECT_EQ(lyricsWindow->background, kHoverGrey);
}

TEST_F(PreferencesTest, CancelAndCloseRevertTheLyricsWindowAndStoreNothing) {
    for (bool byCloseButton : {false, true}) {
        showLyrics();
        opener->open();
        prefs->texts[0] = "30";
        prefs->wellColor = {1, 0, 0, 1};
        poll();
        prefs->checkBox = true;
        prefs->actions->clickedKeepBackgroundColor(true);
        ASSERT_DOUBLE_EQ(lyricsWindow->fontSize, 30);

        if (byCloseButton)
            prefs->close();
        else
            prefs->actions->clickCancel();
        EXPECT_TRUE(prefs->closed);
        EXPECT_EQ(PreferenceWC::shared, nullptr);
        EXPECT_EQ(queue.liveTimers(), 0);
        EXPECT_GE(prefs->wellDeactivations, 1);
        EXPECT_DOUBLE_EQ(lyricsWindow->fontSize, 18);
        EXPECT_EQ(lyricsWindow->textColor, opaque(kSystemGrey));
        EXPECT_FALSE(LyricsVC::shared->keepBackgroundColor);
        EXPECT_EQ(lyricsWindow->background, kClearColor);
        LyricsVC::shared->setLyricText("next line");
        EXPECT_EQ(lyricsWindow->background, kClearColor);
        EXPECT_TRUE(storedSettings().empty());
    }
    EXPECT_EQ(windowsMade, 2);
}

TEST_F(PreferencesTest, ConfirmInsertsTheFourKeysThenUpdatesThem) {
    showLyrics();
    opener->open();
    prefs->texts[0] = "5";
    prefs->wellColor = {1, 0.5, 0, 1};
    prefs->checkBox = true;
    poll();
    prefs->actions->clickConfirm();
    queue.drain();
    EXPECT_TRUE(prefs->closed);
    EXPECT_EQ(storedSettings(), (std::map<std::string, std::string>{{"oneRowFontSize", "10.00"},
                                                                     {"twoRowsFontSize", "14.00"},
                                                                     {"fontColor", "1.000000,0.500000,0.000000"},
                                                                     {"keepBackgroundColor", "true"}}));
    EXPECT_DOUBLE_EQ(lyricsWindow->fontSize, 10) << "closing re-applies the confirmed values";
    EXPECT_EQ(lyricsWindow->background, kHoverGrey);
    auto first = *store->fetchSettingsEntities();

    opener->open();
    EXPECT_EQ(prefs->texts[0], "10.00");
    prefs->actions->clickOneRowDefault();
    prefs->checkBox = false;
    poll();
    prefs->actions->clickConfirm();
    queue.drain();
    auto second = *store->fetchSettingsEntities();
    ASSERT_EQ(second.size(), 4u);
    for (auto& record : second) EXPECT_NE(std::find(first.begin(), first.end(), record), first.end());

    // What was confirmed is on disk, not only in memory.
    store.reset();
    Store reopened(path, queue);
    auto onDisk = settingsIn(reopened);
    EXPECT_EQ(onDisk["oneRowFontSize"], "18.00");
    EXPECT_EQ(onDisk["keepBackgroundColor"], "false");
    EXPECT_EQ(onDisk.size(), 4u);
}

TEST_F(PreferencesTest, WorksWithoutALyricsWindow) {
    opener->open();
    prefs->texts[0] = "30";
    poll();
    prefs->actions->clickedKeepBackgroundColor(true);
    prefs->actions->clickColorDefault();
    prefs->actions->clickCancel();
    EXPECT_DOUBLE_EQ(vc().tryingOneRowFontSize, 18);
    EXPECT_EQ(LyricsVC::shared, nullptr);
}

}  // namespace
}  // namespace tunelark
