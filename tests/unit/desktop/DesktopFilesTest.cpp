#include "desktop/CommandLine.h"
#include "desktop/DesktopFiles.h"

#include "page/MainVC.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"
#include "fakes/FakeProgressIndicator.h"
#include "platform/PosixFileTree.h"
#include "library/PlayList.h"
#include "library/store/FileNames.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

namespace tunelark {
namespace {

using Texts = std::vector<std::string>;

// Files handed over by the desktop, added through the real add operation and play-list load into a store
// on a temporary file; the page's play-item operation is recorded.
class DesktopFilesTest : public ::testing::Test {
protected:
    DesktopFilesTest() {
        operations.playItem = [this](const std::string& url) { played.push_back(url); };
        for (const char* name : {"a.mp3", "b.mp3", "c.mp3", "b.lrc", "notes.txt"}) test::writeAll(dir.file(name), name);
    }
    std::string url(const std::string& name) const { return fileUrlFromPath(dir.file(name)); }
    std::size_t storedSongs() { return store.fetchMp3Entities().value_or(Records<Mp3Entity>{}).size(); }

    test::TempDir dir;
    test::FakeMainQueue queue;
    test::FakePageView page;
    test::FakeDialogs dialogs;
    Store store{dir.file("Tunelark.sqlite"), queue};
    PageState pageState;
    MainVC view{queue, &page, pageState};
    PlayList playList{store, queue, view};
    PosixFileTree tree;
    test::FakeProgressIndicator progress;
    AddFiles addFiles{store, dialogs, queue, [this] { playList.sendPlayList(); }, tree, progress};
    BridgeOperations operations;
    Texts played;
    std::unique_ptr<DesktopFiles> files = std::make_unique<DesktopFiles>(queue, pageState, addFiles, operations);
};

TEST_F(DesktopFilesTest, FilesWaitForThePageThenAreAddedAndTheFirstAudioGivenPlays) {
    files->open({dir.file("notes.txt"), dir.file("b.lrc"), dir.file("c.mp3"), dir.file("a.mp3")});
    queue.advance(DesktopFiles::kReadyPoll * 3);
    EXPECT_EQ(files->waiting(), 1u);
    EXPECT_EQ(storedSongs(), 0u) << "nothing is added before the page has shown the window";
    pageState.loaded = true;
    queue.advance(DesktopFiles::kReadyPoll);
    EXPECT_EQ(files->waiting(), 0u);
    EXPECT_EQ(storedSongs(), 2u);
    EXPECT_EQ(played, Texts{url("c.mp3")}) << "the first audio file given, not the first in the list";
    EXPECT_EQ(queue.liveTimers(), 0) << "the poll stops once the page is ready";

    files->add({dir.file("b.mp3")});
    queue.drain();
    EXPECT_EQ(storedSongs(), 3u) << "added at once now that the page is ready";
    EXPECT_EQ(played.size(), 1u) << "adding leaves playback alone";
}

TEST_F(DesktopFilesTest, OnlyAFileThatMadeItIntoThePlayListPlaysAndNothingRunsAfterTheOwnerIsGone) {
    pageState.loaded = true;
    files->open({});
    files->open({dir.file("missing.mp3"), dir.file("notes.txt")});
    queue.drain();
    EXPECT_TRUE(played.empty()) << "a file that could not be added is not played";
    files->open({dir.file("missing.mp3"), dir.file("b.mp3")});
    queue.drain();
    EXPECT_EQ(played, Texts{url("b.mp3")});

    files->open({dir.file("a.mp3")});
    files.reset();
    queue.drain();
    EXPECT_EQ(played.size(), 1u) << "the queued play belongs to the destroyed owner";
}

TEST_F(DesktopFilesTest, AFolderIsWalkedAndItsFirstAudioFileInUrlOrderPlays) {
    pageState.loaded = true;
    std::filesystem::create_directories(dir.file("Album/CD 2"));
    for (const char* name : {"Album/CD 2/01.mp3", "Album/02.mp3", "Album/01.lrc", "Album/01.mp3"})
        test::writeAll(dir.file(name), "");
    files->open({dir.file("Album")});
    for (int i = 0; i < 2000 && addFiles.busy(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        queue.advance(AddRequests::kPoll);
    }
    queue.drain();
    EXPECT_EQ(storedSongs(), 3u);
    EXPECT_EQ(played, Texts{url("Album/01.mp3")});
    EXPECT_FALSE(progress.shown) << "nothing is left in the header bar";
}

TEST(CommandLineTest, HelpAndVersionWinAnUnknownOptionFailsAndFilesKeepTheirOrder) {
    using Action = CommandLine::Action;
    struct Case { Texts args; Action action; Texts files; std::string error; };
    const Case cases[] = {
        {{}, Action::Run, {}, ""},
        {{"b.mp3", "-", "a.lrc"}, Action::Run, {"b.mp3", "-", "a.lrc"}, ""},
        {{"--", "--help", "-x.mp3"}, Action::Run, {"--help", "-x.mp3"}, ""},
        {{"a.mp3", "--version"}, Action::Version, {"a.mp3"}, ""},
        {{"--version", "-h"}, Action::Help, {}, ""},
        {{"--help", "--version"}, Action::Help, {}, ""},
        {{"--bogus", "--help"}, Action::Help, {}, ""},
        {{"-v", "--bogus", "a.mp3"}, Action::Fail, {"a.mp3"}, "unknown option '-v' (see --help)"},
        {{"--", "--"}, Action::Run, {"--"}, ""},
    };
    for (const Case& c : cases) {
        const CommandLine parsed = parseCommandLine(c.args);
        const std::string given = testing::PrintToString(c.args);
        EXPECT_EQ(parsed.action, c.action) << given;
        EXPECT_EQ(parsed.files, c.files) << given;
        EXPECT_EQ(parsed.error, c.error) << given;
    }
    EXPECT_EQ(versionText().rfind("tunelark ", 0), 0u);
}

}  // namespace
}  // namespace tunelark
