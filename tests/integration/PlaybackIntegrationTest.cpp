#include "AudioTestSupport.h"
#include "bridge/MainVC.h"
#include "engine/Engine.h"
#include "engine/OutputDeviceWatch.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakePageView.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "library/store/Store.h"
#include "platform/glib/GlibMainQueue.h"
#include "platform/gstreamer/GstAudioPlayerFactory.h"
#include "platform/pulse/PulseOutputDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace tunelark::test {
namespace {

using namespace std::chrono_literals;

// The engine on the real audio player, the real default-sink watch and the GLib main loop; only the
// page and the dialogs are recorded instead of shown.
class PlaybackIntegrationTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        files = new AudioFiles;
        first = files->tone("first.mp3", 1.2, 440);
        second = files->tone("second.mp3", 1.2, 660);
        longTone = files->tone("long.mp3", 8, 440);
        corrupt = files->randomBytes("corrupt.mp3", 64 * 1024);
    }
    static void TearDownTestSuite() { delete files; }

    void SetUp() override {
        ASSERT_FALSE(first.empty()) << "sox and lame must be installed";
        ASSERT_TRUE(shell("pactl set-default-sink tl_sink_a")) << "run inside tests/support/with-session.sh";
        view.storedMp3Entities.emplace();
        view.storedLrcEntities.emplace();
    }
    void TearDown() override { shell("pactl set-default-sink tl_sink_a"); }

    void addSong(const std::string& path) {
        auto entry = store.insertMp3Entity();
        entry->bookmark = makeBookmark(path);
        entry->filePath = fileUrlFromPath(path);
        entry->fileName = std::filesystem::path(path).filename().string();
        entry->mainPathFileName = getMainPathFileName(*entry->filePath);
        entry->no = static_cast<std::int16_t>(view.storedMp3Entities->size() + 1);
        view.storedMp3Entities->push_back(entry);
    }

    long count(const std::string& script) const { return std::count(page.scripts.begin(), page.scripts.end(), script); }
    bool saw(const std::string& script) const { return count(script) > 0; }
    bool sawPrefix(const std::string& prefix) const {
        return std::any_of(page.scripts.begin(), page.scripts.end(),
                           [&](const std::string& s) { return s.rfind(prefix, 0) == 0; });
    }
    static std::string playingPath(const std::string& path) {
        return "setPlayingFilePath(\"" + fileUrlFromPath(path) + "\");";
    }

    static inline AudioFiles* files = nullptr;
    static inline std::string first, second, longTone, corrupt;

    GlibMainQueue queue;
    FakePageView page;
    Store store{files->path("Tunelark-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) +
                            ".sqlite"),
                queue};
    FakeDialogs dialogs;
    GstAudioPlayerFactory players;
    PulseOutputDevice device;
    MainVC view{queue, &page};
    Engine engine{PlayerDeps{queue, store, dialogs, players, device}};
    OutputDeviceWatch watch{engine, device};
};

TEST_F(PlaybackIntegrationTest, TheEndOfATrackMovesToTheNextByModeAndTheClockReportsTheTime) {
    addSong(first);
    addSong(second);
    engine.get().playItem(fileUrlFromPath(first));
    ASSERT_TRUE(runMainLoopUntil([&] { return saw(playingPath(second)); }, 6s)) << "no move to the second track";
    EXPECT_TRUE(saw("setDuration(\"00:01\");"));
    EXPECT_TRUE(sawPrefix("setCurrent(\"00:0"));
    // The list cycles: the first track follows the second.
    page.scripts.clear();
    ASSERT_TRUE(runMainLoopUntil([&] { return saw(playingPath(first)); }, 6s));
    EXPECT_THAT(dialogs.alerts, ::testing::IsEmpty());
}

TEST_F(PlaybackIntegrationTest, ACorruptFileGivesTheNotPlayableCallsAndNoAlert) {
    addSong(corrupt);
    engine.get().playItem(fileUrlFromPath(corrupt));
    runMainLoopFor(300ms);
    EXPECT_TRUE(saw("setCurrent(\"-1\");"));
    EXPECT_TRUE(saw("setDuration(\"-1\");"));
    EXPECT_TRUE(saw(playingPath(corrupt)));
    EXPECT_TRUE(saw("setIsPlaying(false);"));
    EXPECT_FALSE(saw("setIsPlaying(true);"));
    EXPECT_THAT(dialogs.alerts, ::testing::IsEmpty());
}

TEST_F(PlaybackIntegrationTest, ChangingTheDefaultSinkPausesOnceAndSwitchingBackResumes) {
    addSong(longTone);
    // The device recorded at the play start must be the real one, as it is once the program has run a moment.
    ASSERT_TRUE(runMainLoopUntil([&] { return device.defaultOutputDevice() != 0; }, 3s));
    watch.start(queue);
    engine.get().playItem(fileUrlFromPath(longTone));
    ASSERT_TRUE(runMainLoopUntil([&] { return saw("setIsPlaying(true);"); }, 3s));
    // Under load the pipeline may reach its playing state a while after the page was told.
    ASSERT_TRUE(runMainLoopUntil(
        [&] { return engine.get().mp3Player() != nullptr && engine.get().mp3Player()->isPlaying(); }, 5s));
    page.scripts.clear();

    ASSERT_TRUE(shell("pactl set-default-sink tl_sink_b"));
    ASSERT_TRUE(runMainLoopUntil([&] { return saw("setIsPlaying(false);"); }, 3s)) << "no pause";
    runMainLoopFor(500ms);
    EXPECT_EQ(count("setIsPlaying(false);"), 1);
    ASSERT_NE(engine.get().mp3Player(), nullptr);
    EXPECT_FALSE(engine.get().mp3Player()->isPlaying());

    ASSERT_TRUE(shell("pactl set-default-sink tl_sink_a"));
    ASSERT_TRUE(runMainLoopUntil([&] { return saw("setIsPlaying(true);"); }, 3s)) << "no resume";
    EXPECT_TRUE(engine.get().mp3Player()->isPlaying());
    watch.stop();
}

}  // namespace
}  // namespace tunelark::test
