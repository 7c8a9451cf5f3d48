#include "DesktopFixture.h"

#include <gmock/gmock.h>

namespace tunelark::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DesktopFilesTest : public DesktopFixture {
protected:
    std::string file(const std::string& name) {
        writeFile(dir.file(name), "bytes");
        return dir.file(name);
    }
    // The stored audio entries as "number fileName", in play-list order.
    std::vector<std::string> storedAudio() {
        std::vector<std::string> rows;
        const auto stored = store.fetchMp3Entities();
        for (const auto& entry : *stored) {
            rows.push_back(std::to_string(entry->no) + " " + entry->fileName.value_or(""));
        }
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    bool sentPlayList(const std::vector<std::string>& scripts) {
        for (const auto& script : scripts) {
            if (script.starts_with("setPlayList(")) return true;
        }
        return false;
    }
};

TEST_F(DesktopFilesTest, FilesWaitForThePageThenAreAddedAndTheFirstAudioFileGivenPlays) {
    view->loaded = false;
    files.open({file("b.mp3"), file("b.lrc"), file("a.mp3"), file("notes.txt")});
    queue.drain();
    EXPECT_THAT(storedAudio(), IsEmpty()) << "nothing is added before the page has shown the window";
    EXPECT_EQ(files.waiting(), 1u);

    view->loaded = true;  // the page's first showWindow
    queue.advance(DesktopFiles::kReadyPoll);

    EXPECT_EQ(files.waiting(), 0u);
    EXPECT_THAT(storedAudio(), ElementsAre("1 a.mp3", "2 b.mp3")) << "numbered in sorted order, as the panel's files";
    auto lyrics = store.fetchLrcEntities();
    ASSERT_TRUE(lyrics && lyrics->size() == 1u);
    EXPECT_EQ((*lyrics)[0]->charset, "utf8");
    const auto scripts = sent();
    EXPECT_TRUE(sentPlayList(scripts));
    EXPECT_THAT(scripts, Contains(playingPath(url("b.mp3")))) << "the first audio file given, not the first sorted";
    EXPECT_EQ(view->playingFilePath, url("b.mp3"));
    EXPECT_THAT(players.openedPaths, ElementsAre(dir.file("b.mp3")));
    EXPECT_EQ(queue.liveTimers(), 1) << "only the engine's clock: the wait for the page has ended";
}

TEST_F(DesktopFilesTest, AKnownFileKeepsItsEntryAndAMissingFileIsSkipped) {
    view->loaded = true;
    files.open({file("a.mp3"), file("b.mp3")});
    queue.drain();
    std::vector<std::string> before = storedAudio();

    files.open({dir.file("missing.mp3"), dir.file("b.mp3")});
    queue.drain();

    EXPECT_EQ(storedAudio(), before) << "no new entry for a file already in the play list";
    EXPECT_EQ(view->playingFilePath, url("b.mp3")) << "the missing file is left out; the next one plays";
}

TEST_F(DesktopFilesTest, DroppedFilesAreAddedWithoutTouchingPlayback) {
    view->loaded = true;
    addSong("playing.mp3");
    operations.playItem(url("playing.mp3"));
    sent();

    files.add({file("dropped.mp3")});
    const auto scripts = sent();

    EXPECT_TRUE(sentPlayList(scripts));
    EXPECT_THAT(storedAudio(), ElementsAre("1 playing.mp3", "2 dropped.mp3"));
    EXPECT_EQ(view->playingFilePath, url("playing.mp3"));
    EXPECT_TRUE(players.last()->playing);
    EXPECT_EQ(players.openedPaths.size(), 1u);
}

TEST_F(DesktopFilesTest, LyricFilesAloneStartNothingAndNoFilesDoNothing) {
    view->loaded = true;
    files.open({file("song.lrc")});
    files.open({});
    const auto scripts = sent();
    EXPECT_THAT(players.openedPaths, IsEmpty());
    EXPECT_EQ(view->playingFilePath, "");
    EXPECT_TRUE(sentPlayList(scripts));
}

}  // namespace
}  // namespace tunelark::test
