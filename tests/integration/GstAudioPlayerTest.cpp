#include "AudioTestSupport.h"
#include "platform/gstreamer/GstAudioPlayerFactory.h"

#include <gtest/gtest.h>

#include <memory>

namespace tunelark::test {
namespace {

using namespace std::chrono_literals;

class GstAudioPlayerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        files = new AudioFiles;
        shortTone = files->tone("short.mp3", 1.5, 440);
        longTone = files->tone("long.mp3", 6, 440);
    }
    static void TearDownTestSuite() { delete files; }

    void SetUp() override {
        ASSERT_FALSE(shortTone.empty()) << "sox and lame must be installed";
        ASSERT_FALSE(longTone.empty());
    }

    static inline AudioFiles* files = nullptr;
    static inline std::string shortTone;
    static inline std::string longTone;
    GstAudioPlayerFactory factory;
};

TEST_F(GstAudioPlayerTest, OpensAnMp3PausedWithItsDuration) {
    auto player = factory.open(longTone);
    ASSERT_NE(player, nullptr);
    EXPECT_FALSE(player->isPlaying());
    EXPECT_NEAR(player->duration(), 6.0, 0.1);
    EXPECT_NEAR(player->position(), 0.0, 0.05);
}

TEST_F(GstAudioPlayerTest, FilesThatCannotBePlayedGiveNoPlayer) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"empty file", files->bytes("empty.mp3", "")},
        {"random bytes", files->randomBytes("noise.mp3", 64 * 1024)},
        {"text", files->bytes("notes.mp3", "These are not the sounds you are looking for.\n")},
        {"missing", files->path("missing.mp3")},
        {"folder", files->path("")},
    };
    for (const auto& [what, path] : cases) EXPECT_EQ(factory.open(path), nullptr) << what;
}

TEST_F(GstAudioPlayerTest, PlaysPausesAndSeeks) {
    auto player = factory.open(longTone);
    ASSERT_NE(player, nullptr);
    ASSERT_TRUE(player->play());
    EXPECT_TRUE(player->isPlaying());
    ASSERT_TRUE(runMainLoopUntil([&] { return player->position() > 0.3; }, 5s)) << "the position advances";

    player->pause();
    EXPECT_FALSE(player->isPlaying());
    runMainLoopFor(100ms);
    double paused = player->position();
    runMainLoopFor(400ms);
    EXPECT_NEAR(player->position(), paused, 0.05) << "a paused track stays";

    player->setPosition(4.0);
    ASSERT_TRUE(runMainLoopUntil([&] { return std::abs(player->position() - 4.0) < 0.1; }, 3s));
    EXPECT_FALSE(player->isPlaying()) << "a seek does not start playback";

    player->stop();
    ASSERT_TRUE(runMainLoopUntil([&] { return player->position() < 0.1; }, 3s)) << "stop rewinds";
    EXPECT_FALSE(player->isPlaying());
}

TEST_F(GstAudioPlayerTest, ReportsTheEndOnceAndAFinishedTrackPlaysAgainFromTheStart) {
    auto player = factory.open(shortTone);
    ASSERT_NE(player, nullptr);
    int ends = 0;
    player->setOnEnd([&] { ++ends; });
    ASSERT_TRUE(player->play());

    ASSERT_TRUE(runMainLoopUntil([&] { return ends > 0; }, 10s));
    runMainLoopFor(300ms);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(player->isPlaying());

    ASSERT_TRUE(player->play());
    ASSERT_TRUE(runMainLoopUntil([&] { return player->position() > 0.05; }, 5s));
    EXPECT_LT(player->position(), 1.0);
    ASSERT_TRUE(runMainLoopUntil([&] { return ends == 2; }, 10s));
}

TEST_F(GstAudioPlayerTest, ASeekBackBeforeTheEndIsHandledDropsTheOldEnd) {
    auto player = factory.open(shortTone);
    ASSERT_NE(player, nullptr);
    int ends = 0;
    player->setOnEnd([&] { ++ends; });
    player->setPosition(1.45);
    ASSERT_TRUE(player->play());
    // Let the stream end in GStreamer's threads without dispatching the bus message.
    g_usleep(600 * 1000);
    player->setPosition(0.2);

    runMainLoopFor(300ms);
    EXPECT_EQ(ends, 0) << "the end belonged to the segment before the seek";
    EXPECT_TRUE(player->isPlaying());
}

TEST_F(GstAudioPlayerTest, TheEndCallbackMayDestroyThePlayer) {
    std::unique_ptr<AudioPlayer> player = factory.open(shortTone);
    ASSERT_NE(player, nullptr);
    bool ended = false;
    player->setOnEnd([&] {
        ended = true;
        player.reset();
    });
    player->setPosition(1.2);
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(runMainLoopUntil([&] { return ended; }, 10s));
    runMainLoopFor(200ms);
    EXPECT_EQ(player, nullptr);
}

TEST_F(GstAudioPlayerTest, ADestroyedPlayerNeverCallsBack) {
    bool called = false;
    {
        auto player = factory.open(shortTone);
        ASSERT_NE(player, nullptr);
        player->setOnEnd([&] { called = true; });
        player->setPosition(1.4);
        player->play();
        g_usleep(400 * 1000);  // the end is posted on the bus, not yet dispatched
    }
    runMainLoopFor(300ms);
    EXPECT_FALSE(called);
}

// The tone's pitch on the sink's monitor and the pace of the position, at several rates. A rate set
// without rate control enabled has no effect.
TEST_F(GstAudioPlayerTest, TheRateChangesThePaceButNotThePitch) {
    std::string tone = files->tone("pitch.mp3", 20, 440);
    ASSERT_FALSE(tone.empty());
    struct Case {
        float rate;
        bool enabled;
        double pace;
    };
    for (const Case& c : {Case{1.0f, true, 1.0}, Case{2.0f, true, 2.0}, Case{0.5f, true, 0.5}, Case{2.0f, false, 1.0}}) {
        auto player = factory.open(tone);
        ASSERT_NE(player, nullptr);
        player->enableRate(c.enabled);
        player->setRate(c.rate);
        ASSERT_TRUE(player->play());
        ASSERT_TRUE(runMainLoopUntil([&] { return player->position() > 0.5; }, 5s));
        const double from = player->position();
        const auto start = std::chrono::steady_clock::now();
        std::vector<std::int16_t> samples = recordMonitor("tl_sink_a", 1.2);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        const double pace = (player->position() - from) / wall.count();
        ASSERT_GT(samples.size(), 20000u) << "the monitor of tl_sink_a gave no samples";
        // Skip the recording's first 0.1 s: it may hold a moment from before the tone.
        samples.erase(samples.begin(), samples.begin() + 4410);
        EXPECT_NEAR(dominantFrequency(samples), 440, 10) << "rate " << c.rate << (c.enabled ? "" : " (not enabled)");
        EXPECT_NEAR(pace, c.pace, c.pace * 0.25) << "rate " << c.rate << (c.enabled ? "" : " (not enabled)");
    }
}

}  // namespace
}  // namespace tunelark::test
