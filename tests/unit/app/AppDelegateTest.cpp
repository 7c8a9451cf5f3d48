#include "app/AppDelegate.h"
#include "engine/Engine.h"
#include "engine/OutputDeviceWatch.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakeMainWindow.h"
#include "fakes/FakePreferencesWindow.h"
#include "library/store/Store.h"
#include "main_window/MainWC.h"
#include "preferences/PreferenceWC.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FakeSupportWindow : public SupportWindow {
public:
    explicit FakeSupportWindow(std::vector<std::string>& log) : log_(log) {}
    void show() override { log_.push_back("show " + std::to_string(id)); }
    void close() override { log_.push_back("close " + std::to_string(id)); }
    int id = 0;

private:
    std::vector<std::string>& log_;
};

// Holds the write lock of the store file from another connection, so that saves fail.
class WriteLock {
public:
    explicit WriteLock(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &db_), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db_, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    }
    ~WriteLock() {
        sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
        sqlite3_close(db_);
    }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

private:
    sqlite3* db_ = nullptr;
};

class AppDelegateTest : public ::testing::Test {
protected:
    AppDelegateTest() {
        // The file exists with its schema before any lock is taken on it.
        store->insertSettingsEntity()->key = "oneRowFontSize";
        EXPECT_EQ(store->saveNow(), std::nullopt);
        makeDelegate();
    }
    ~AppDelegateTest() override {
        delegate.reset();
        std::filesystem::remove_all(folder);
    }

    void makeDelegate() {
        delegate = std::make_unique<AppDelegate>(AppDelegate::Deps{
            *store, dialogs, queue, watch, preferences, [this](const SupportWindowContent& content) {
                shownContents.push_back(content);
                auto window = std::make_unique<FakeSupportWindow>(supportLog);
                window->id = static_cast<int>(shownContents.size());
                return window;
            }});
    }

    // An unsaved change: a new play-list entry.
    void changeSomething() { store->insertMp3Entity()->filePath = "file:///unsaved.mp3"; }

    std::size_t storedMp3Count() {
        Store fresh(storePath, queue);
        return fresh.fetchMp3Entities().value().size();
    }

    static std::string makeFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tl-app-XXXXXX").string();
        return mkdtemp(pattern.data());
    }

    std::string folder = makeFolder();
    std::string storePath = folder + "/Tunelark.sqlite";
    FakeMainQueue queue;
    FakeDialogs dialogs;
    FakeAudioPlayerFactory players;
    FakeOutputDevice device;
    std::unique_ptr<Store> store = std::make_unique<Store>(storePath, queue);
    Engine engine{PlayerDeps{queue, *store, dialogs, players, device}};
    OutputDeviceWatch watch{engine, device};
    std::vector<FakePreferencesWindow*> preferenceWindows;
    PreferencesOpener preferences{[this] {
                                      auto window = std::make_unique<FakePreferencesWindow>();
                                      preferenceWindows.push_back(window.get());
                                      return window;
                                  },
                                  *store, queue};
    std::vector<SupportWindowContent> shownContents;
    std::vector<std::string> supportLog;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, QuitsAtOnceWhenNothingIsUnsavedOrTheSaveSucceeds) {
    EXPECT_EQ(delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::now);
    changeSomething();
    EXPECT_EQ(delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::now);
    EXPECT_EQ(storedMp3Count(), 1u);
    EXPECT_THAT(dialogs.questions, IsEmpty());
    EXPECT_THAT(dialogs.errors, IsEmpty());
}

TEST_F(AppDelegateTest, AFailedSaveAtQuitShowsTheErrorThenAsksWithTheExactTexts) {
    changeSomething();
    WriteLock lock(storePath);
    dialogs.askAnswer = 1;  // "Cancel"
    EXPECT_EQ(delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::cancel);
    ASSERT_EQ(dialogs.errors.size(), 1u);
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].message, "Could not save changes while quitting. Quit anyway?");
    EXPECT_EQ(dialogs.questions[0].informative,
              "Quitting now will lose any changes you have made since the last successful save");
    EXPECT_THAT(dialogs.questions[0].buttons, ElementsAre("Quit anyway", "Cancel"));
    // Staying keeps the changes for a later save.
    EXPECT_TRUE(store->hasChanges());

    dialogs.askAnswer = 0;  // "Quit anyway"
    EXPECT_EQ(delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::now);
    dialogs.askAnswer = -1;  // closed without a button: only "Cancel" keeps the program
    EXPECT_EQ(delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::now);
}

TEST_F(AppDelegateTest, AResolvedSaveErrorCancelsTheQuitWithoutTheDialog) {
    changeSomething();
    WriteLock lock(storePath);
    dialogs.errorResolved = true;
    EXPECT_EQ(delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::cancel);
    EXPECT_THAT(dialogs.questions, IsEmpty());
}

TEST_F(AppDelegateTest, SaveFromTheMenuPresentsAFailureAndKeepsTheChangesForTheNextSave) {
    changeSomething();
    {
        WriteLock lock(storePath);
        delegate->saveAction();
        EXPECT_EQ(dialogs.errors.size(), 1u);
        EXPECT_THAT(dialogs.questions, IsEmpty());
        EXPECT_TRUE(store->hasChanges());
    }
    delegate->saveAction();
    EXPECT_EQ(dialogs.errors.size(), 1u);
    EXPECT_FALSE(store->hasChanges());
    EXPECT_EQ(storedMp3Count(), 1u);
}

TEST_F(AppDelegateTest, TheDeviceWatcherRunsFromLaunchUntilTermination) {
    EXPECT_EQ(queue.liveTimers(), 0);
    delegate->applicationDidFinishLaunching();
    EXPECT_FALSE(engine.created());
    queue.advance(std::chrono::milliseconds(70));
    // The first look creates the engine, whose clock is the second timer.
    EXPECT_TRUE(engine.created());
    EXPECT_EQ(queue.liveTimers(), 2);
    delegate->applicationWillTerminate();
    EXPECT_EQ(queue.liveTimers(), 1);
}

TEST_F(AppDelegateTest, TerminationClosesTheColourPanelOfAnOpenPreferencesWindow) {
    delegate->applicationWillTerminate();  // nothing open: nothing to close
    delegate->clickedMenuPreference();
    ASSERT_EQ(preferenceWindows.size(), 1u);
    const int before = preferenceWindows[0]->wellDeactivations;
    delegate->applicationWillTerminate();
    EXPECT_EQ(preferenceWindows[0]->wellDeactivations, before + 1);
    EXPECT_FALSE(preferenceWindows[0]->closed);
}

TEST_F(AppDelegateTest, PreferencesTwiceMakeOneWindowAndBringItForward) {
    delegate->clickedMenuPreference();
    delegate->clickedMenuPreference();
    ASSERT_EQ(preferenceWindows.size(), 1u);
    EXPECT_EQ(preferenceWindows[0]->showCount, 2);
    // Once closed, the next choice makes a fresh window.
    preferenceWindows[0]->close();
    delegate->clickedMenuPreference();
    EXPECT_EQ(preferenceWindows.size(), 2u);
}

TEST_F(AppDelegateTest, SupportWindowReplacesTheOpenOneAndThanksTheUser) {
    delegate->clickedSponsor();
    delegate->clickedSponsor();
    EXPECT_THAT(supportLog, ElementsAre("show 1", "close 1", "show 2"));
    ASSERT_FALSE(shownContents.empty());
    EXPECT_EQ(shownContents[0].heading, "Thank you for using Tunelark");
}

TEST_F(AppDelegateTest, ReopenShowsTheMainWindowOnceThePageHasSizedIt) {
    FakeMainWindow window;
    FakeScreens screens;
    MainWC controller(window, screens, [](int) {});
    EXPECT_TRUE(delegate->applicationShouldHandleReopen());
    EXPECT_EQ(window.showCount, 0);  // not sized yet: stays hidden
    window.everShown = true;
    window.currentFrame = Rect{0, 0, 1200, 600};
    EXPECT_TRUE(delegate->applicationShouldHandleReopen());
    EXPECT_EQ(window.showCount, 1);
}

}  // namespace
}  // namespace tunelark::test
