// Lyric files no person would write, loaded by the engine from real files: each loads or is refused with
// its alert, quickly and whole.
#include "EngineFixture.h"
#include "engine/lyrics/CharsetEnum.h"

#include <gmock/gmock.h>

namespace tunelark::test {
namespace {

using namespace ::testing;

std::string repeated(const std::string& piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    while (times--) text += piece;
    return text;
}

class HostileLyricsTest : public EngineFixture {
protected:
    // Loads the bytes as the playing track's lyric file; the alerts it gave.
    std::vector<std::string> load(const std::string& bytes, const std::string& charset = "utf8") {
        pageState.storedLrcEntities->clear();
        dialogs.alerts.clear();
        addLyrics(charset + ".lrc", bytes, charset);
        pageState.playingFilePath = url(charset + ".mp3");
        player.timeline().parse("[00:01]from before\n");
        player.loadLyrics();
        queue.drain();
        return dialogs.alerts;
    }
    std::string refusal(const std::string& charset) {
        return "Can not open lrc file:" + charset + ".lrc in charset:" + charset + " (" + url(charset + ".lrc") + ")";
    }
    PlayerUtil player{deps(), seams};
};

TEST_F(HostileLyricsTest, HugeEmptyAndNulFilesLoadWhole) {
    const auto& t = player.timeline();
    EXPECT_THAT(load(""), IsEmpty());
    EXPECT_TRUE(t.empty());
    EXPECT_THAT(load(repeated("[00:01.50]la\n", 1'000'000)), IsEmpty());
    EXPECT_EQ(t.size(), 1'000'000u);
    EXPECT_EQ(t.lineText(999'999), "la");
    EXPECT_THAT(load("[00:02]" + std::string(5 << 20, 'a')), IsEmpty());
    EXPECT_EQ(t.lineText(0).size(), 5u << 20);
    EXPECT_THAT(load(repeated("[00:03.00]", 10'000) + "end"), IsEmpty());
    ASSERT_EQ(t.size(), 1u);
    EXPECT_EQ(t.lineText(0), repeated("[00:03.00]", 9'999) + "end") << "the first tag is the line's, the rest text";
    EXPECT_THAT(load(std::string("[00:04]a\0b\n\0\n[00:05]\0", 20)), IsEmpty());
    EXPECT_EQ(t.size(), 3u);
    EXPECT_EQ(t.lineText(0), std::string("a\0b", 3));
}

TEST_F(HostileLyricsTest, ABadByteAnywhereRefusesTheWholeFileWithTheEncodingsName) {
    EXPECT_THAT(load(repeated("[00:01.00]fine\n", 100'000) + "\xff"), ElementsAre(refusal("utf8")));
    EXPECT_TRUE(player.timeline().empty());
    // Bytes that break each multi-byte or sparse encoding; encodings that map every byte decode them all.
    const std::vector<std::string> breaking{std::string("\xff\xfe\xfd", 3), std::string("[00:01]\x81", 8),
                                            std::string("\x1b$)C\x0e\xff", 6), std::string("\xd8\x00\x00", 3),
                                            std::string("\x00\x00\x11\x00\x00", 5), std::string("\x98\x8e\x90\xa0", 4)};
    int refusing = 0;
    for (int i = 0; i < kCharsetCount; ++i) {
        const auto charset = static_cast<CharsetEnum>(i);
        const auto bytes = std::ranges::find_if(breaking, [&](const auto& b) { return !decodeLyrics(b, charset); });
        if (bytes == breaking.end()) continue;
        ++refusing;
        const std::string name(charsetName(charset));
        lyricTexts.clear();
        EXPECT_THAT(load(*bytes, name), ElementsAre(refusal(name)));
        EXPECT_TRUE(player.timeline().empty()) << name;
        EXPECT_THAT(lyricTexts, ElementsAre("")) << name;
    }
    EXPECT_GE(refusing, 30) << "only single-byte code pages that map every byte decode all of them";
}

}  // namespace
}  // namespace tunelark::test
