#include "app/AppDelegate.h"
#include "engine/EngineFixture.h"
#include "engine/OutputDeviceWatch.h"
#include "fakes/FakePreferencesWindow.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

namespace tunelark::test {
namespace {

using Reply = AppDelegate::TerminateReply;
using AppDelegateTest = EngineFixture;

TEST_F(AppDelegateTest, AFailedSaveIsPresentedAndKeepsTheChangesAndAtQuitOnlyCancelKeepsTheProgram) {
    PlayerHolder engine{deps()};
    OutputDeviceWatch watch{engine, device};
    PreferencesOpener preferences{[] { return std::make_unique<FakePreferencesWindow>(); }, store, queue};
    AppDelegate delegate{AppDelegate::Deps{store, dialogs, queue, watch, preferences,
                                           [](const SupportWindowContent&) { return nullptr; }}};
    addSong("saved.mp3");
    store.insertMp3Entity()->filePath = "file:///unsaved.mp3";
    // Another connection holds the write lock until this closes it, rolling back.
    sqlite3* db = nullptr;
    sqlite3_open(dir.file("Tunelark.sqlite").c_str(), &db);
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> lock(db, sqlite3_close);
    ASSERT_EQ(sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);

    delegate.saveAction();
    EXPECT_EQ(dialogs.errors.size(), 1u);
    EXPECT_TRUE(dialogs.questions.empty()) << "a save from the menu only presents the error";
    dialogs.askAnswer = 1;  // "Cancel"
    EXPECT_EQ(delegate.applicationShouldTerminate(), Reply::cancel);
    ASSERT_EQ(dialogs.errors.size(), 2u);
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].message, "Could not save changes while quitting. Quit anyway?");
    EXPECT_EQ(dialogs.questions[0].informative,
              "Quitting now will lose any changes you have made since the last successful save");
    EXPECT_THAT(dialogs.questions[0].buttons, testing::ElementsAre("Quit anyway", "Cancel"));
    dialogs.askAnswer = 0;  // "Quit anyway"
    EXPECT_EQ(delegate.applicationShouldTerminate(), Reply::now);
    dialogs.askAnswer = -1;  // closed without a button
    EXPECT_EQ(delegate.applicationShouldTerminate(), Reply::now);
    dialogs.errorResolved = true;
    EXPECT_EQ(delegate.applicationShouldTerminate(), Reply::cancel);
    EXPECT_EQ(dialogs.questions.size(), 3u) << "a resolved error cancels without asking";

    lock.reset();
    EXPECT_EQ(delegate.applicationShouldTerminate(), Reply::now) << "the kept changes are saved";
    EXPECT_EQ(Store(dir.file("Tunelark.sqlite"), queue).fetchMp3Entities()->size(), 2u);
}

}  // namespace
}  // namespace tunelark::test
