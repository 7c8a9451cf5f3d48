#include "library/AddRequests.h"

#include "fakes/FakeMainQueue.h"
#include "fakes/FakeProgressIndicator.h"
#include "platform/PosixFileTree.h"
#include "TempDir.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tunelark {
namespace {

using namespace ::testing;
using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

// The store step is recorded; walks run on the test's thread when the test lets them.
class AddRequestsTest : public ::testing::Test {
protected:
    AddRequestsTest() {
        std::filesystem::create_directories(dir.file("Music/sub"));
        for (const char* name : {"Music/b.mp3", "Music/a.lrc", "Music/sub/c.mp3", "Music/x.txt", "one.mp3"})
            test::writeAll(dir.file(name), "");
    }
    std::string music() const { return dir.file("Music"); }
    Texts musicFiles() const { return {dir.file("Music/a.lrc"), dir.file("Music/b.mp3"), dir.file("Music/sub/c.mp3")}; }
    // Lets the walks started so far run to their end.
    void finishWalks() {
        auto pending = std::exchange(walks, {});
        for (auto& walk : pending) walk();
    }

    test::TempDir dir;
    test::FakeMainQueue queue;
    test::FakeProgressIndicator progress;
    PosixFileTree tree;
    std::vector<Texts> stored;
    bool storeWorks = true;
    std::vector<std::function<void()>> walks;
    std::vector<Texts> added;
    AddRequests requests{queue, tree, progress,
                         [this](const Texts& paths) {
                             stored.push_back(paths);
                             return storeWorks;
                         },
                         [this](std::function<void()> work) { walks.push_back(std::move(work)); }};
    AddRequests::Added record = [this](const Texts& paths) { added.push_back(paths); };
};

TEST_F(AddRequestsTest, FilesAreAddedAtOnceWithoutAWalk) {
    requests.add({dir.file("one.mp3"), dir.file("Music/b.mp3")}, record);
    EXPECT_EQ(stored, (std::vector<Texts>{{dir.file("one.mp3"), dir.file("Music/b.mp3")}}));
    EXPECT_EQ(added, stored);
    EXPECT_TRUE(walks.empty());
    EXPECT_FALSE(requests.busy());
}

TEST_F(AddRequestsTest, AQuickWalkShowsNoProgressAndHandsItsFilesToOneStoreStep) {
    requests.add({dir.file("one.mp3"), music()}, record);
    EXPECT_TRUE(stored.empty()) << "nothing is stored while the folder is walked";
    ASSERT_EQ(walks.size(), 1u);
    finishWalks();
    queue.advance(AddRequests::kPoll);
    Texts expected{dir.file("one.mp3")};
    for (const auto& file : musicFiles()) expected.push_back(file);
    EXPECT_EQ(stored, std::vector<Texts>{expected});
    EXPECT_EQ(added, stored);
    EXPECT_TRUE(progress.texts.empty());
    queue.advance(1s);
    EXPECT_TRUE(progress.texts.empty()) << "the progress delay ends with the walk";
    EXPECT_EQ(queue.liveTimers(), 0);
}

TEST_F(AddRequestsTest, AWalkLongerThanHalfASecondShowsItsCountUntilItsFilesAreStored) {
    requests.add({music()}, record);
    queue.advance(AddRequests::kProgressDelay - 1ms);
    EXPECT_FALSE(progress.shown);
    queue.advance(1ms);
    ASSERT_TRUE(progress.shown);
    EXPECT_EQ(progress.texts.back(), "Adding folders: 0 files found");
    ASSERT_TRUE(progress.onCancel);
    finishWalks();
    queue.advance(AddRequests::kPoll);
    EXPECT_EQ(progress.texts.back(), "Adding 3 files");
    EXPECT_FALSE(progress.onCancel) << "too late to cancel";
    EXPECT_TRUE(stored.empty()) << "stored at the next poll, once the header bar has been drawn";
    queue.advance(AddRequests::kPoll);
    EXPECT_FALSE(progress.shown);
    EXPECT_EQ(stored, std::vector<Texts>{musicFiles()});
}

TEST_F(AddRequestsTest, RequestsAreCarriedOutInTheOrderTheyCome) {
    requests.add({music()}, record);
    requests.add({dir.file("one.mp3")}, record);
    EXPECT_TRUE(stored.empty()) << "a file waits for the folder before it";
    finishWalks();
    queue.advance(AddRequests::kPoll);
    EXPECT_EQ(stored, (std::vector<Texts>{musicFiles(), {dir.file("one.mp3")}}));
    EXPECT_FALSE(requests.busy());
}

TEST_F(AddRequestsTest, CancelAddsNothingOfTheRunningAndTheWaitingRequestsAndTheNextAddWorks) {
    requests.add({music()}, record);
    requests.add({dir.file("one.mp3")}, record);
    queue.advance(AddRequests::kProgressDelay);
    ASSERT_TRUE(progress.shown);
    testing::internal::CaptureStdout();
    progress.pressCancel();
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("Adding cancelled: nothing was added"));
    EXPECT_FALSE(progress.shown);
    EXPECT_FALSE(requests.busy());
    finishWalks();  // the walking thread ends later, told to stop
    queue.advance(1s);
    EXPECT_TRUE(stored.empty());
    EXPECT_TRUE(added.empty());
    requests.add({music()}, record);
    finishWalks();
    queue.advance(AddRequests::kPoll);
    EXPECT_EQ(stored, std::vector<Texts>{musicFiles()});
}

TEST_F(AddRequestsTest, SkippedEntriesReachTheConsoleAndAFailedStoreStepIsNotReportedAsAdded) {
    std::filesystem::create_symlink(music(), dir.file("Music/sub/loop"));
    requests.add({music()}, record);
    storeWorks = false;
    testing::internal::CaptureStdout();
    finishWalks();
    queue.advance(AddRequests::kPoll);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                HasSubstr("Skipped a loop of symbolic links: " + dir.file("Music/sub/loop") + "\n"));
    EXPECT_EQ(stored.size(), 1u);
    EXPECT_TRUE(added.empty());
}

// The real thread: the walk ends on its own and the main queue's poll finds it.
TEST(AddRequestsThreadTest, AWalkOnItsOwnThreadIsStoredOnTheMainQueue) {
    test::TempDir dir;
    std::filesystem::create_directories(dir.file("Music"));
    test::writeAll(dir.file("Music/a.mp3"), "");
    test::FakeMainQueue queue;
    test::FakeProgressIndicator progress;
    PosixFileTree tree;
    std::vector<Texts> stored;
    const auto mainThread = std::this_thread::get_id();
    AddRequests requests(queue, tree, progress, [&](const Texts& paths) {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        stored.push_back(paths);
        return true;
    });
    requests.add({dir.file("Music")});
    for (int i = 0; i < 1000 && requests.busy(); ++i) {
        std::this_thread::sleep_for(5ms);
        queue.advance(AddRequests::kPoll);
    }
    EXPECT_EQ(stored, std::vector<Texts>{{dir.file("Music/a.mp3")}});
}

}  // namespace
}  // namespace tunelark
