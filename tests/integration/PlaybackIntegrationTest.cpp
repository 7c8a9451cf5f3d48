// The engine and the player on the real GStreamer player, sound server and GLib main loop; only the page
// and the dialogs are recorded. Runs inside tests/support/with-session.sh.
#include "engine/PlayerHolder.h"
#include "engine/EngineFixture.h"
#include "library/AddFiles.h"
#include "library/PlayList.h"
#include "fakes/FakeProgressIndicator.h"
#include "platform/PosixFileTree.h"
#include "platform/glib/GlibMainQueue.h"
#include "platform/gstreamer/GstAudioPlayerFactory.h"
#include "platform/pulse/PulseOutputDevice.h"
#include "MainLoop.h"

#include <glib.h>
#include <sys/stat.h>

#include <cmath>

namespace tunelark::test {
namespace {

using namespace std::chrono_literals;

// The strongest frequency from 100 to 2000 Hz in steps of 2 Hz (Goertzel) in 1.1 s of a sink's monitor,
// recorded from its 0.1th second on: the recording may start with a moment from before.
double dominantFrequencyOn(const std::string& sink) {
    FILE* pipe = popen(("timeout 1.2 parec -d " + sink + ".monitor --raw --format=s16le --rate=44100 --channels=1"
                        " --latency-msec=20").c_str(), "r");
    std::vector<std::int16_t> samples(44100 * 6 / 5);
    samples.resize(pipe ? fread(samples.data(), 2, samples.size(), pipe) : 0);
    if (pipe) pclose(pipe);
    EXPECT_GT(samples.size(), 20000u) << "the monitor of " << sink << " gave no samples";
    double best = 0, bestPower = 0;
    for (double f = 100; f <= 2000; f += 2) {
        const double c = 2 * std::cos(2 * M_PI * f / 44100);
        double s1 = 0, s2 = 0;
        for (std::size_t i = 4410; i < samples.size(); ++i) std::tie(s1, s2) = std::pair{samples[i] + c * s1 - s2, s1};
        const double power = s1 * s1 + s2 * s2 - c * s1 * s2;
        if (power > bestPower) std::tie(best, bestPower) = std::pair{f, power};
    }
    return best;
}

std::string noise(std::size_t size, std::uint32_t state) {
    std::string bytes(size, '\0');
    for (char& c : bytes) c = char((state = state * 1664525u + 1013904223u) >> 24);
    return bytes;
}

class PlaybackIntegrationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(shell("pactl set-default-sink tl_sink_a")) << "run inside tests/support/with-session.sh";
    }

    // A sine tone made by sox and encoded by lame.
    std::string tone(const std::string& name, double seconds, int hertz) {
        EXPECT_TRUE(shell("sox -V1 -n -r 44100 -c 2 -t wav - synth " + std::to_string(seconds) + " sine " +
                          std::to_string(hertz) + " vol 0.5 | lame --quiet -b 128 - " + dir.file(name)))
            << "sox and lame must be installed";
        return dir.file(name);
    }
    // Adds the files to the play list as the user does.
    void add(const std::vector<std::string>& paths) {
        PosixFileTree tree;
        test::FakeProgressIndicator progress;
        AddFiles(store, dialogs, queue, [] {}, tree, progress).addPaths(paths);
        PlayList(store, queue, view).loadPlayList();
    }
    // Opens a file of the test folder; opening must never keep the main thread waiting long.
    std::unique_ptr<AudioPlayer> openBounded(const std::string& name) {
        const auto start = std::chrono::steady_clock::now();
        auto player = players.open(dir.file(name));
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s) << name;
        return player;
    }
    long count(const std::string& script) { return std::count(page.scripts.begin(), page.scripts.end(), script); }

    TempDir dir;
    GlibMainQueue queue;
    FakePageView page;
    Store store{dir.file("Tunelark.sqlite"), queue};
    FakeDialogs dialogs;
    GstAudioPlayerFactory players;
    PulseOutputDevice device;
    PageState pageState;
    MainVC view{queue, &page, pageState};
    PlayerHolder engine{PlayerDeps{queue, view, store, dialogs, players, device}};
};

// open() on a named pipe waits for a writer: no such file may keep the player waiting.
TEST_F(PlaybackIntegrationTest, FilesWithoutPlayableAudioAreRefusedAtOnce) {
    ASSERT_EQ(mkfifo(dir.file("pipe.mp3").c_str(), 0644), 0);
    std::filesystem::create_directory(dir.file("folder.mp3"));
    writeAll(dir.file("empty.mp3"), "");
    writeAll(dir.file("header.mp3"), std::string("ID3\x03\0\0\0\0\0\0\xff\xfb\x90\x64", 14));
    writeAll(dir.file("noise.mp3"), noise(256 * 1024, 12345));
    for (auto name : {"pipe.mp3", "folder.mp3", "empty.mp3", "header.mp3", "noise.mp3", "missing.mp3"}) {
        EXPECT_EQ(openBounded(name), nullptr) << name;
    }
}

// Files as users' folders hold them: each plays from where it is put to one reported end.
TEST_F(PlaybackIntegrationTest, OtherFormatsNamedMp3ATaggedFileAndACutFilePlayToTheirEnd) {
    const std::string mp3 = readAll(tone("tone.mp3", 2, 440));
    ASSERT_TRUE(shell("sox -q -n -r 44100 -c 2 " + dir.file("w.wav") + " synth 1 sine 440 && sox -q " +
                      dir.file("w.wav") + " " + dir.file("v.ogg")));
    writeAll(dir.file("wave.mp3"), readAll(dir.file("w.wav")));
    writeAll(dir.file("vorbis.mp3"), readAll(dir.file("v.ogg")));
    writeAll(dir.file("cover art.mp3"), id3Tag(pictureFrame('\3', "image/jpeg", noise(1 << 20, 7))) + mp3);
    writeAll(dir.file("half.mp3"), mp3.substr(0, mp3.size() / 2 + 77));  // a download stopped inside a frame
    for (auto [name, length, from] : {std::tuple{"wave.mp3", 1.0, 0.0}, {"vorbis.mp3", 1.0, 0.0},
                                      {"cover art.mp3", 2.0, 1.5}, {"half.mp3", 1.0, 0.0}}) {
        SCOPED_TRACE(name);
        auto player = openBounded(name);
        ASSERT_NE(player, nullptr);
        EXPECT_NEAR(player->duration(), length, 0.15);
        int ends = 0;
        player->setOnEnd([&] { ++ends; });
        player->setPosition(from);
        ASSERT_TRUE(player->play());
        EXPECT_TRUE(runUntil([&] { return ends > 0; }, 6s));
        runUntil([] { return false; }, 200ms);
        EXPECT_EQ(ends, 1);
        EXPECT_FALSE(player->isPlaying());
    }
}

TEST_F(PlaybackIntegrationTest, TheRateChangesThePaceButNotThePitch) {
    const std::string path = tone("pitch.mp3", 20, 440);
    for (auto [rate, enabled, pace] : {std::tuple{2.0f, true, 2.0}, {0.5f, true, 0.5}, {2.0f, false, 1.0}}) {
        SCOPED_TRACE(std::to_string(rate) + (enabled ? "" : " without rate control"));
        auto player = players.open(path);
        ASSERT_NE(player, nullptr);
        player->enableRate(enabled);
        player->setRate(rate);
        ASSERT_TRUE(player->play());
        ASSERT_TRUE(runUntil([&] { return player->position() > 0.5; }, 5s));
        const double from = player->position();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_NEAR(dominantFrequencyOn("tl_sink_a"), 440, 10);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        EXPECT_NEAR((player->position() - from) / wall.count(), pace, pace * 0.25);
    }
}

// The sound server ends our stream while it plays, as when the output goes away: the error reaches the
// engine, which drops the player and does not move on (what the page is told: the engine's unit tests).
TEST_F(PlaybackIntegrationTest, AStreamEndedByTheServerWhilePlayingIsReportedNotPlayable) {
    add({tone("cut.mp3", 8, 440), tone("after.mp3", 1, 660)});
    const std::string cut = fileUrlFromPath(dir.file("cut.mp3"));
    engine.player().playItem(cut);
    ASSERT_TRUE(runUntil([&] { return count(isPlaying(true)) && engine.player().mp3Player()->isPlaying(); }, 5s));
    const auto streams = [] { return shell("pactl list short sink-inputs | grep -q ."); };
    ASSERT_TRUE(runUntil(streams, 3s)) << "no stream on the sound server";
    page.scripts.clear();
    ASSERT_TRUE(shell("for s in $(pactl list short sink-inputs | cut -f1); do pacmd kill-sink-input $s; done"));
    ASSERT_TRUE(runUntil([&] { return count(durationText("-1")) > 0; }, 5s)) << "the error was not reported";
    runUntil([] { return false; }, 500ms);
    EXPECT_EQ(count(playingPath(fileUrlFromPath(dir.file("after.mp3")))), 0);
    EXPECT_EQ(engine.player().mp3Player(), nullptr);
}

}  // namespace
}  // namespace tunelark::test
