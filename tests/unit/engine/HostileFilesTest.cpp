// Files that change under the play list between adding and playing, and lyric files no person would
// write, through the engine with real bookmarks and a real store: each gives its report, never a hang.
#include "EngineFixture.h"
#include "engine/lyrics/CharsetEnum.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HostileFilesTest : public EngineFixture {
protected:
    std::string url(const std::string& fileName) { return fileUrlFromPath(dir.file(fileName)); }
    void makeCurrent(const std::string& audioFileName) { view->playingFilePath = url(audioFileName); }

    // Puts a named pipe (nobody writes to it) or a folder where the file was.
    void replaceWithPipe(const std::string& fileName) {
        std::filesystem::remove(dir.file(fileName));
        ASSERT_EQ(mkfifo(dir.file(fileName).c_str(), 0644), 0);
    }
    void replaceWithFolder(const std::string& fileName) {
        std::filesystem::remove(dir.file(fileName));
        std::filesystem::create_directory(dir.file(fileName));
    }

    std::vector<std::string> failedPlayItem(const std::string& fileName) {
        return {isPlaying(false), playingPath(url(fileName)), current("-1"), durationText("-1"),
                playingPath(url(fileName)), isPlaying(false), slider(0), mainFileName(displayName(fileName))};
    }

    PlayerUtil player{deps(), seams};
};

TEST_F(HostileFilesTest, AnAudioFileDeletedAfterAddingIsReportedAndTheMarkIsSaved) {
    addSong("gone.mp3");
    std::filesystem::remove(dir.file("gone.mp3"));

    player.playItem(url("gone.mp3"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("gone.mp3")), current("-1"), durationText("-1"),
                                    playingPath(url("gone.mp3")), isPlaying(false), slider(0), mainFileName("gone")));
    EXPECT_THAT(dialogs.alerts, ElementsAre("You need to redo Add Operation for mp3:gone.mp3 (" + url("gone.mp3") + ")"));
    EXPECT_THAT(players.openedPaths, IsEmpty());

    FakeMainQueue otherQueue;
    Store reopened(dir.file("Tunelark.sqlite"), otherQueue);
    auto stored = reopened.fetchMp3Entities().value();
    ASSERT_EQ(stored.size(), 1u) << "the entry stays in the play list";
    EXPECT_TRUE(stored[0]->canNotUseNow);
    EXPECT_EQ(stored[0]->filePath, url("gone.mp3"));
}

// The name still resolves, so nothing is stale; but a pipe would block whoever opens it and a folder
// holds no sound: neither reaches the player.
TEST_F(HostileFilesTest, AnAudioFileReplacedByAPipeOrAFolderIsNotPlayableAndNothingWaits) {
    addSong("pipe.mp3");
    addSong("folder.mp3");
    replaceWithPipe("pipe.mp3");
    replaceWithFolder("folder.mp3");

    for (const std::string name : {"pipe.mp3", "folder.mp3"}) {
        player.playItem(url(name));
        EXPECT_THAT(sent(), ::testing::ElementsAreArray(failedPlayItem(name))) << name;
    }
    EXPECT_THAT(players.openedPaths, IsEmpty());
    EXPECT_THAT(dialogs.alerts, IsEmpty());

    view->playingFilePath = "";
    player.play();
    sent();
    EXPECT_EQ(player.mp3Player(), nullptr);
}

TEST_F(HostileFilesTest, ALyricFileReplacedByAPipeIsReportedUnreadable) {
    addLyrics("song.lrc", "[00:01.00]x\n");
    replaceWithPipe("song.lrc");
    makeCurrent("song.mp3");

    player.loadLyrics();
    queue.drain();

    EXPECT_TRUE(player.timeline().empty());
    EXPECT_THAT(lyricTexts, ElementsAre(""));
    EXPECT_THAT(dialogs.alerts, ElementsAre("Can not open lrc file:song.lrc in charset:utf8 (" + url("song.lrc") + ")"));
}

struct LyricCase {
    const char* name;
    std::function<std::string()> bytes;
    std::size_t entries;
    std::function<void(const LrcTimeline&)> check;
};

std::string repeated(const std::string& piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) text += piece;
    return text;
}

class HostileLyricsTest : public HostileFilesTest, public ::testing::WithParamInterface<LyricCase> {};

TEST_P(HostileLyricsTest, LoadsWithoutAlert) {
    addLyrics("song.lrc", GetParam().bytes(), "utf8");
    makeCurrent("song.mp3");

    player.loadLyrics();
    queue.drain();

    EXPECT_THAT(dialogs.alerts, IsEmpty());
    EXPECT_EQ(player.timeline().size(), GetParam().entries);
    if (GetParam().check) GetParam().check(player.timeline());
}

INSTANTIATE_TEST_SUITE_P(
    Files, HostileLyricsTest,
    ::testing::Values(
        LyricCase{"Empty", [] { return std::string(); }, 0, nullptr},
        LyricCase{"AMillionLines", [] { return repeated("[00:01.50]la\n", 1000000); }, 1000000,
                  [](const LrcTimeline& t) { EXPECT_EQ(t.lineText(999999), "la"); }},
        LyricCase{"OneLineOfFiveMegabytes", [] { return "[00:02]" + std::string(5 << 20, 'a'); }, 1,
                  [](const LrcTimeline& t) { EXPECT_EQ(t.lineText(0).size(), 5u << 20); }},
        LyricCase{"TenThousandTagsOnOneLine", [] { return repeated("[00:03.00]", 10000) + "end"; }, 1,
                  [](const LrcTimeline& t) {
                      EXPECT_EQ(t.timeLineArray[0], 3.0);
                      EXPECT_EQ(t.lineText(0), repeated("[00:03.00]", 9999) + "end");
                  }},
        LyricCase{"NulBytes", [] { return std::string("[00:04]a\0b\n\0\n[00:05]\0", 20); }, 3,
                  [](const LrcTimeline& t) {
                      EXPECT_EQ(t.lineText(0), std::string("a\0b", 3));
                      EXPECT_EQ(t.lineText(1), std::string("\0", 1));
                  }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(HostileFilesTest, AnInvalidByteAtTheEndOfALongFileRefusesTheWholeFile) {
    addLyrics("song.lrc", repeated("[00:01.00]fine\n", 100000) + "\xff", "utf8");
    makeCurrent("song.mp3");

    player.loadLyrics();
    queue.drain();

    EXPECT_TRUE(player.timeline().empty());
    EXPECT_THAT(dialogs.alerts, ElementsAre("Can not open lrc file:song.lrc in charset:utf8 (" + url("song.lrc") + ")"));
}

// Bytes that break each multi-byte or sparse encoding; encodings that map every byte decode them.
TEST_F(HostileFilesTest, EveryEncodingGivenBytesItCannotDecodeAlertsWithItsName) {
    const std::vector<std::string> hostile{std::string("\xff\xfe\xfd", 3), std::string("[00:01]\x81", 8),
                                           std::string("\x1b$)C\x0e\xff", 6), std::string("\xd8\x00\x00", 3),
                                           std::string("\x00\x00\x11\x00\x00", 5), std::string("\x98\x8e\x90\xa0", 4)};
    int refusing = 0;
    for (int i = 0; i < kCharsetCount; ++i) {
        const auto charset = static_cast<CharsetEnum>(i);
        const std::string name(charsetName(charset));
        std::string bytes;
        for (const std::string& candidate : hostile) {
            if (!decodeLyrics(candidate, charset)) {
                bytes = candidate;
                break;
            }
        }
        if (bytes.empty()) continue;  // every candidate decodes: nothing to refuse
        ++refusing;
        dialogs.alerts.clear();
        lyricTexts.clear();
        auto entry = addLyrics(name + ".lrc", bytes, name);
        makeCurrent(name + ".mp3");
        player.timeline().parse("[00:01]previous\n");

        player.loadLyrics();
        queue.drain();

        EXPECT_TRUE(player.timeline().empty()) << name;
        EXPECT_THAT(lyricTexts, ElementsAre("")) << name;
        EXPECT_THAT(dialogs.alerts, ElementsAre("Can not open lrc file:" + name + ".lrc in charset:" + name + " (" +
                                                url(name + ".lrc") + ")"))
            << name;
    }
    EXPECT_GE(refusing, 30) << "only the single-byte code pages that map every byte decode all candidates";
}

}  // namespace
}  // namespace tunelark::test
