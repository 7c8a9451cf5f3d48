#include "library/PlayListEditor.h"

#include "engine/EngineFixture.h"
#include "library/store/Settings.h"

#include <gmock/gmock.h>

namespace tunelark::test {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class PlayListEditorTest : public EngineFixture {
protected:
    std::string url(const std::string& fileName) { return fileUrlFromPath(dir.file(fileName)); }

    std::vector<int> numbersOf(std::initializer_list<std::shared_ptr<Mp3Entity>> entries) {
        std::vector<int> numbers;
        for (const auto& e : entries) numbers.push_back(e->no);
        return numbers;
    }

    Engine engine{deps()};
    PlayList playList{store, queue};
    PlayListEditor editor{store, queue, playList, engine};
};

TEST_F(PlayListEditorTest, MoveRenumbersUpAndDownWithoutTellingThePage) {
    auto a = addSong("a.mp3"), b = addSong("b.mp3"), c = addSong("c.mp3"), d = addSong("d.mp3");
    sent();

    editor.moveItem(1, 3);  // the page's fromIndex 0, toIndex 2
    queue.drain();
    EXPECT_EQ(numbersOf({a, b, c, d}), (std::vector<int>{3, 1, 2, 4}));
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_FALSE(store.hasChanges());
    EXPECT_EQ(view->storedMp3Entities->front(), b) << "the view's list follows the new order";

    editor.moveItem(4, 1);
    queue.drain();
    EXPECT_EQ(numbersOf({a, b, c, d}), (std::vector<int>{4, 2, 3, 1}));

    editor.moveItem(2, 2);
    EXPECT_FALSE(store.hasChanges());
    EXPECT_EQ(queue.pending(), 0u);
}

TEST_F(PlayListEditorTest, RemovingThePlayingTrackPlaysTheNextAndDropsItsLyrics) {
    addSong("a.mp3");
    addSong("b.mp3");
    addLyrics("a.lrc", "[00:01.00]one\n");
    engine.get().playItem(url("a.mp3"));
    sent();

    editor.remove(url("a.mp3"));
    auto scripts = sent();

    EXPECT_EQ(view->playingFilePath, url("b.mp3"));
    EXPECT_TRUE(players.last()->playing);
    EXPECT_EQ(store.fetchMp3Entities()->size(), 1u);
    EXPECT_THAT(*store.fetchLrcEntities(), IsEmpty());
    EXPECT_EQ(view->storedMp3Entities->front()->no, 1) << "the rest is numbered from 1";
    EXPECT_THAT(scripts, Contains(::testing::HasSubstr("setPlayList(")));
}

TEST_F(PlayListEditorTest, RemovingThePausedCurrentTrackSelectsTheNextAndStaysPaused) {
    addSong("a.mp3");
    addSong("b.mp3");
    engine.get().playItem(url("a.mp3"));
    engine.get().pause();
    sent();

    editor.remove(url("a.mp3"));
    auto scripts = sent();

    EXPECT_EQ(view->playingFilePath, url("b.mp3"));
    EXPECT_FALSE(players.last()->playing);
    EXPECT_EQ(scripts.back().rfind("setPlayList(", 0), 0u);
    EXPECT_THAT(scripts, Contains(isPlaying(false)));
}

TEST_F(PlayListEditorTest, RemovingAnotherItemLeavesPlaybackAlone) {
    addSong("a.mp3");
    addSong("b.mp3");
    engine.get().playItem(url("a.mp3"));
    sent();
    auto playing = players.last();

    editor.remove(url("b.mp3"));
    sent();
    EXPECT_EQ(view->playingFilePath, url("a.mp3"));
    EXPECT_EQ(players.last(), playing);
    EXPECT_TRUE(playing->playing);

    editor.remove(url("nothing.mp3"));
    EXPECT_THAT(sent(), Contains(::testing::HasSubstr("setPlayList(")))
        << "the list is sent again even when nothing matched";
}

TEST_F(PlayListEditorTest, ClearStopsResetsThePageAndKeepsSettings) {
    addSong("a.mp3");
    addLyrics("a.lrc", "[00:01.00]one\n");
    auto setting = store.insertSettingsEntity();
    setting->key = std::string(kOneRowFontSizeKey);
    setting->value = "30.00";
    store.saveNow();
    engine.get().playItem(url("a.mp3"));
    sent();

    editor.clear();
    auto scripts = sent();

    EXPECT_FALSE(players.last()->playing);
    EXPECT_EQ(players.last()->position, 0);
    EXPECT_EQ(view->playingFilePath, "");
    EXPECT_THAT(scripts, UnorderedElementsAre(current("-1"), durationText("-1"), mainFileName(""), isPlaying(false),
                                              playingPath(""), "setPlayList(\"[]\",\"[]\");"));
    EXPECT_THAT(*store.fetchMp3Entities(), IsEmpty());
    EXPECT_THAT(*store.fetchLrcEntities(), IsEmpty());
    EXPECT_EQ(store.fetchSettingsEntities()->size(), 1u);
}

TEST_F(PlayListEditorTest, CharsetIsStoredAsGivenAndLyricsReloadAtOnce) {
    addSong("a.mp3");
    // "你好" in GB18030: not valid UTF-8, so the first load fails and the reload must succeed.
    auto lyrics = addLyrics("a.lrc", "[00:01.00]\xC4\xE3\xBA\xC3\n", "utf8");
    engine.get().playItem(url("a.mp3"));
    sent();
    EXPECT_TRUE(engine.get().timeline().empty());

    editor.setCharset(*lyrics->mainPathFileName, "GB18030");
    EXPECT_EQ(lyrics->charset, "GB18030");
    queue.drain();
    EXPECT_FALSE(store.hasChanges()) << "the new name is saved";
    ASSERT_EQ(engine.get().timeline().size(), 1u);
    EXPECT_EQ(engine.get().timeline().lineText(0), "你好");

    editor.setCharset(*lyrics->mainPathFileName, "not-a-charset");
    EXPECT_EQ(lyrics->charset, "not-a-charset") << "stored without checking the catalogue";
    EXPECT_THAT(sent(), Not(Contains(::testing::HasSubstr("setPlayList("))));
}

}  // namespace
}  // namespace tunelark::test
