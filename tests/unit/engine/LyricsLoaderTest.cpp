#include "EngineFixture.h"
#include "engine/LyricsLoader.h"

#include <gmock/gmock.h>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LyricsLoaderTest : public EngineFixture {
protected:
    void current(const std::string& audioFileName) { view->playingFilePath = fileUrlFromPath(dir.file(audioFileName)); }
    std::string url(const std::string& fileName) { return fileUrlFromPath(dir.file(fileName)); }

    PlayerUtil player{deps(), seams};
};

TEST_F(LyricsLoaderTest, ParsesTheLyricFileOfTheCurrentItem) {
    addLyrics("song.lrc", "[00:10.00]A\n[00:20.00]B\n");
    current("song.mp3");

    player.loadLyrics();

    EXPECT_THAT(player.timeline().timeLineArray, ElementsAre(10.0, 20.0));
    EXPECT_THAT(timelineTexts(player), ElementsAre("A", "B"));
    EXPECT_THAT(dialogs.alerts, IsEmpty());
}

TEST_F(LyricsLoaderTest, TheFirstOfTwoEntriesWithTheSameMainPathIsUsed) {
    auto first = addLyrics("song.lrc", "[00:01.00]first\n");
    auto second = addLyrics("other.lrc", "[00:01.00]second\n");
    second->mainPathFileName = first->mainPathFileName;
    auto unnamed = addLyrics("none.lrc", "[00:01.00]no main path\n");
    unnamed->mainPathFileName.reset();
    view->storedLrcEntities->insert(view->storedLrcEntities->begin(), unnamed);
    current("song.mp3");

    player.loadLyrics();

    EXPECT_THAT(timelineTexts(player), ElementsAre("first"));
}

TEST_F(LyricsLoaderTest, AnItemWithoutLyricsEmptiesTheTimelineSilently) {
    addLyrics("other.lrc", "[00:01.00]not ours\n");
    player.timeline().parse("[00:01.00]previous track\n");
    current("song.mp3");

    player.loadLyrics();
    queue.drain();

    EXPECT_TRUE(player.timeline().empty());
    EXPECT_THAT(dialogs.alerts, IsEmpty());
    EXPECT_THAT(lyricTexts, IsEmpty());
}

TEST_F(LyricsLoaderTest, AStaleBookmarkThatStillReadsIsReportedMarkedAndNotParsed) {
    auto entry = addLyrics("song.lrc", "[00:01.00]readable\n");
    std::filesystem::rename(dir.file("song.lrc"), dir.file("renamed.lrc"));
    current("song.mp3");

    player.loadLyrics();
    queue.drain();

    EXPECT_THAT(dialogs.alerts, ElementsAre("You need to redo Add Operation for lrc:song.lrc (" + url("song.lrc") + ")"));
    EXPECT_TRUE(player.timeline().empty());
    EXPECT_TRUE(entry->canNotUseNow);
    EXPECT_FALSE(store.hasChanges()) << "the mark is saved";
}

TEST_F(LyricsLoaderTest, AMarkedEntryIsResolvedAgainAndReportedAgain) {
    addLyrics("song.lrc", "[00:01.00]x\n")->bookmark = Bytes{1, 2, 3};
    current("song.mp3");

    player.loadLyrics();
    player.loadLyrics();
    queue.drain();

    EXPECT_EQ(dialogs.alerts.size(), 2u);
}

TEST_F(LyricsLoaderTest, BytesInvalidInTheStoredEncodingClearTheWindowThenAlert) {
    addLyrics("song.lrc", "[00:01.00]\xff\xfe broken\n", "utf8");
    current("song.mp3");
    std::vector<std::string> order;
    seams.setLyricText = [&](const std::string& text) { order.push_back("text:" + text); };

    player.loadLyrics();
    EXPECT_THAT(order, IsEmpty()) << "posted, not run inside the load";
    queue.drain();
    for (const auto& alert : dialogs.alerts) order.push_back("alert:" + alert);

    EXPECT_THAT(order, ElementsAre("text:", "alert:Can not open lrc file:song.lrc in charset:utf8 (" + url("song.lrc") + ")"));
    EXPECT_TRUE(player.timeline().empty());
    EXPECT_FALSE(player.timeline().lrcString);
}

TEST_F(LyricsLoaderTest, AnEncodingOutsideTheCatalogueDecodesByDefaultAndIsNamedAsStored) {
    addLyrics("song.lrc", "[00:01.00]fine\n", "klingon");
    current("song.mp3");
    player.loadLyrics();
    EXPECT_THAT(timelineTexts(player), ElementsAre("fine"));

    writeFile(dir.file("song.lrc"), "\xff");
    player.loadLyrics();
    queue.drain();
    EXPECT_THAT(dialogs.alerts, ElementsAre("Can not open lrc file:song.lrc in charset:klingon (" + url("song.lrc") + ")"));
}

TEST_F(LyricsLoaderTest, AMissingFileWithoutAWindowOnlyAlerts) {
    seams.setLyricText = nullptr;
    addLyrics("song.lrc", "[00:01.00]x\n", "utf8");
    std::filesystem::remove(dir.file("song.lrc"));
    current("song.mp3");

    player.loadLyrics();
    queue.drain();

    // A file that is gone cannot be resolved: the bookmark counts as stale.
    EXPECT_THAT(dialogs.alerts, ElementsAre("You need to redo Add Operation for lrc:song.lrc (" + url("song.lrc") + ")"));
}

TEST(LyricsAlertTextTest, PlaceholdersAreFilledOnceEvenWhenANameHoldsOne) {
    LrcEntity entry;
    entry.fileName = "{1}{2}.lrc";
    entry.filePath = "file:///x/%7B1%7D.lrc";
    EXPECT_EQ(unreadableLyricsAlertText(entry, "big5"),
              "Can not open lrc file:{1}{2}.lrc in charset:big5 (file:///x/%7B1%7D.lrc)");

    LrcEntity bare;
    EXPECT_EQ(staleLyricsAlertText(bare), "You need to redo Add Operation for lrc: ()");
}

}  // namespace
}  // namespace tunelark::test
