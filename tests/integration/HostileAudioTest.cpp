// Audio files as users' folders hold them, through the real GStreamer player: each is refused at once
// or plays to a reported end; none hangs the main thread or crashes.
#include "AudioTestSupport.h"
#include "platform/gstreamer/GstAudioPlayerFactory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>

namespace tunelark::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// An ID3v2.3 tag of about `size` bytes: one picture frame of noise, as a tagger writes cover art.
std::string id3TagWithPicture(std::size_t size) {
    std::string picture(size, '\0');
    std::uint32_t state = 7;
    for (char& c : picture) {
        state = state * 1664525u + 1013904223u;
        c = static_cast<char>(state >> 24);
    }
    const std::string body = std::string("\0image/jpeg\0\x03\0", 14) + picture;
    const auto bigEndian = [](std::uint32_t v) {
        return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
    };
    const std::string frame = "APIC" + bigEndian(static_cast<std::uint32_t>(body.size())) + std::string(2, '\0') + body;
    const auto n = static_cast<std::uint32_t>(frame.size());
    const std::string syncsafe{char((n >> 21) & 0x7F), char((n >> 14) & 0x7F), char((n >> 7) & 0x7F), char(n & 0x7F)};
    return std::string("ID3\x03\x00\x00", 6) + syncsafe + frame;
}

class HostileAudioTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        files = new AudioFiles;
        tone = files->tone("tone.mp3", 2, 440);
    }
    static void TearDownTestSuite() { delete files; }
    void SetUp() override { ASSERT_FALSE(tone.empty()) << "sox and lame must be installed"; }

    // Opens the file, failing the test when that takes longer than a moment.
    std::unique_ptr<AudioPlayer> openBounded(const std::string& path) {
        const auto start = Clock::now();
        auto player = factory.open(path);
        EXPECT_LT(Clock::now() - start, 5s) << path << ": opening must never wait long";
        return player;
    }

    // Plays from the start to the reported end, which must come once and in time.
    void expectPlaysToItsEnd(AudioPlayer& player, double seconds, const std::string& what) {
        int ends = 0;
        player.setOnEnd([&] { ++ends; });
        ASSERT_TRUE(player.play()) << what;
        EXPECT_TRUE(runMainLoopUntil([&] { return ends > 0; }, std::chrono::milliseconds(int(seconds * 1000) + 5000)))
            << what << ": the end is reported";
        runMainLoopFor(200ms);
        EXPECT_EQ(ends, 1) << what;
        EXPECT_FALSE(player.isPlaying()) << what;
    }

    static inline AudioFiles* files = nullptr;
    static inline std::string tone;
    GstAudioPlayerFactory factory;
};

TEST_F(HostileAudioTest, FilesThatHoldNoPlayableAudioAreRefusedAtOnce) {
    const std::string mp3 = readAll(tone);
    std::filesystem::create_directory(files->path("folder.mp3"));
    const std::string fifo = files->path("pipe.mp3");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0644), 0);
    const std::string vanished = files->bytes("vanished.mp3", mp3);
    std::filesystem::remove(vanished);
    const std::vector<std::pair<std::string, std::string>> cases{
        {"empty", files->bytes("empty.mp3", "")},
        {"only the tag header and a frame header", files->bytes("header.mp3", std::string("ID3\x03\0\0\0\0\0\0", 10) + mp3.substr(0, 4))},
        {"random bytes", files->randomBytes("random.mp3", 256 * 1024)},
        {"a folder named .mp3", files->path("folder.mp3")},
        {"a named pipe with no writer", fifo},
        {"a file deleted after it was chosen", vanished},
    };
    for (const auto& [what, path] : cases) EXPECT_EQ(openBounded(path), nullptr) << what;
}

TEST_F(HostileAudioTest, OtherAudioFormatsNamedMp3Play) {
    const std::string wav = files->path("wave.wav");
    const std::string ogg = files->path("vorbis.ogg");
    ASSERT_TRUE(shell("sox -q -n -r 44100 -c 2 '" + wav + "' synth 1 sine 440 vol 0.5"));
    ASSERT_TRUE(shell("sox -q -n -r 44100 -c 2 '" + ogg + "' synth 1 sine 440 vol 0.5"));
    for (const auto& [what, source] : {std::pair{"WAV", wav}, std::pair{"Ogg Vorbis", ogg}}) {
        const std::string path = files->bytes(std::string(what) + " named.mp3", readAll(source));
        auto player = openBounded(path);
        ASSERT_NE(player, nullptr) << what;
        EXPECT_NEAR(player->duration(), 1.0, 0.1) << what;
        expectPlaysToItsEnd(*player, 1.0, what);
    }
}

TEST_F(HostileAudioTest, AOneMegabyteTagBeforeTheAudioIsSkipped) {
    const std::string path = files->bytes("cover art.mp3", id3TagWithPicture(1024 * 1024) + readAll(tone));
    auto player = openBounded(path);
    ASSERT_NE(player, nullptr);
    EXPECT_NEAR(player->duration(), 2.0, 0.15);
    player->setPosition(1.5);
    expectPlaysToItsEnd(*player, 0.5, "1 MB tag");
}

// A download that stopped half-way: the part that is there plays, and its end is reported.
TEST_F(HostileAudioTest, AFileCutInTheMiddleOfAFramePlaysWhatItHolds) {
    const std::string mp3 = readAll(tone);
    const std::string path = files->bytes("half.mp3", mp3.substr(0, mp3.size() / 2 + 77));
    auto player = openBounded(path);
    ASSERT_NE(player, nullptr);
    expectPlaysToItsEnd(*player, 2.0, "cut file");
    EXPECT_LT(player->position(), 1.6);
}

}  // namespace
}  // namespace tunelark::test
