#include "page/JsCallReader.h"
#include "engine/PlayerHolder.h"
#include "engine/EngineFixture.h"
#include "engine/lyrics/CharsetEnum.h"
#include "fakes/FakeMainWindow.h"
#include "fakes/FakeProgressIndicator.h"
#include "library/AddFiles.h"
#include "library/PlayListEditor.h"
#include "library/store/Settings.h"
#include "platform/PosixFileTree.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sstream>
#include <thread>

namespace tunelark::test {
namespace {

using namespace ::testing;

class PlayListTest : public EngineFixture {
protected:
    std::string file(const std::string& name) {
        writeAll(dir.file(name), "data");
        return dir.file(name);
    }
    std::shared_ptr<Mp3Entity> audio(const std::string& name) {
        for (auto& e : store.fetchMp3Entities().value_or(Records<Mp3Entity>{}))
            if (e->fileName == name) return e;
        return nullptr;
    }
    int sends = 0;
    PlayerHolder engine{deps()};
    PlayList playList{store, queue, *view};
    PlayListEditor editor{store, queue, *view, playList, engine};
    PosixFileTree tree;
    FakeProgressIndicator progress;
    AddFiles add{store, dialogs, queue, [this] { ++sends; }, tree, progress};
};

TEST_F(PlayListTest, AddedAudioIsNumberedAfterTheStoredInUrlOrderAndPairedWithItsLyrics) {
    add.run();
    EXPECT_EQ(dialogs.panels.at(0).message, "Please Choose the mp3 file(s) and the lrc file(s):");
    add.addPaths({file("old.mp3")});
    dialogs.chosenFiles.push_back({file("song.mp3"), file("song.lrc"), file("b.mp3"), file("A.MP3"), file("c.jpg")});
    add.run();
    queue.drain();
    EXPECT_EQ(sends, 2) << "none for the cancelled panel";
    EXPECT_EQ((std::vector<int>{audio("A.MP3")->no, audio("b.mp3")->no, audio("song.mp3")->no}),
              (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(store.fetchMp3Entities()->size(), 4u);
    auto lyrics = *store.fetchLrcEntities();
    ASSERT_EQ(lyrics.size(), 1u);
    EXPECT_TRUE(lyrics[0]->charset == "utf8" && lyrics[0]->mainPathFileName == audio("song.mp3")->mainPathFileName);
    EXPECT_FALSE(store.hasChanges());
}

// Waits for a folder's walk on its own thread while the main queue runs.
void settle(FakeMainQueue& queue, const AddFiles& add) {
    for (int i = 0; i < 2000 && add.busy(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        queue.advance(AddRequests::kPoll);
    }
    queue.drain();
}

TEST_F(PlayListTest, ThePanelOffersFoldersAndAChosenFolderOfTenThousandFilesIsStoredInUrlOrderInOneSave) {
    add.addPaths({file("old.mp3")});
    queue.drain();
    const TempDir memory(TempDir::memoryBase());
    const std::string music = memory.file("Music");
    for (int album = 0; album < 20; ++album) {
        const std::string folder = music + "/album " + std::to_string(album);
        std::filesystem::create_directories(folder);
        for (int track = 0; track < 500; ++track) writeAll(folder + "/" + std::to_string(track) + ".mp3", "");
    }
    writeAll(music + "/album 3/7.lrc", "[00:01.00]x");
    dialogs.chosenFiles.push_back({music, file("old.mp3"), music + "/album 0/1.mp3"});
    sends = 0;
    add.run();
    EXPECT_EQ(dialogs.panels.at(0).folderAction, "Add Folder");
    settle(queue, add);
    EXPECT_EQ(sends, 1);
    FakeMainQueue otherQueue;
    Store reopened(dir.file("Tunelark.sqlite"), otherQueue);
    auto entries = reopened.fetchMp3Entities().value_or(Records<Mp3Entity>{});
    ASSERT_EQ(entries.size(), 10001u);
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a->no < b->no; });
    EXPECT_EQ(*entries[0]->fileName, "old.mp3") << "chosen again: refreshed, not added twice";
    // album 0/1.mp3 was named on its own and inside the folder: one entry, counted by the size above.
    EXPECT_EQ(*entries[1]->filePath, fileUrlFromPath(music + "/album 0/0.mp3"));
    EXPECT_EQ(*entries[2]->filePath, fileUrlFromPath(music + "/album 0/1.mp3")) << "URL order: 1 before 10";
    EXPECT_EQ(*entries[3]->filePath, fileUrlFromPath(music + "/album 0/10.mp3"));
    EXPECT_TRUE(std::is_sorted(entries.begin() + 1, entries.end(),
                               [](const auto& a, const auto& b) { return *a->filePath < *b->filePath; }));
    EXPECT_EQ(reopened.fetchLrcEntities()->size(), 1u);
}

TEST_F(PlayListTest, AddingAKnownFileAgainRefreshesItButKeepsNumberCharsetAndMark) {
    add.addPaths({file("a.mp3"), file("b.mp3"), file("b.lrc")});
    auto b = audio("b.mp3");
    b->canNotUseNow = true;
    b->duration = "03:00";
    b->bookmark = Bytes{1, 2, 3};
    store.fetchLrcEntities()->at(0)->charset = "GB18030";
    add.addPaths({file("b.mp3"), file("b.lrc")});
    EXPECT_EQ(store.fetchMp3Entities()->size(), 2u);
    EXPECT_TRUE(b->no == 2 && b->canNotUseNow && b->duration == "00:00" && b->bookmark != Bytes({1, 2, 3}));
    EXPECT_EQ(store.fetchLrcEntities()->at(0)->charset, "GB18030");
}

TEST_F(PlayListTest, AudioBeyondTheLargestNumberIsRefusedWithOneAlert) {
    for (int i = 1; i < AddFiles::kMaxNo; ++i) store.insertMp3Entity()->no = std::int16_t(i);
    add.addPaths({file("a.mp3"), file("b.mp3"), file("c.mp3"), file("c.lrc")});
    EXPECT_EQ(audio("a.mp3")->no, AddFiles::kMaxNo);
    EXPECT_TRUE(audio("b.mp3") == nullptr && audio("c.mp3") == nullptr);
    EXPECT_THAT(dialogs.alerts, ElementsAre(HasSubstr("32767")));
    EXPECT_EQ(store.fetchLrcEntities()->size(), 1u) << "lyric files need no number";
}

TEST_F(PlayListTest, MoveRenumbersUpAndDownWithoutTellingThePage) {
    auto a = addSong("a.mp3"), b = addSong("b.mp3"), c = addSong("c.mp3"), d = addSong("d.mp3");
    editor.moveItem(1, 3);
    EXPECT_EQ((std::vector<int>{a->no, b->no, c->no, d->no}), (std::vector<int>{3, 1, 2, 4}));
    EXPECT_EQ(pageState.storedMp3Entities->front(), b) << "the view's list follows";
    editor.moveItem(4, 1);
    EXPECT_EQ((std::vector<int>{a->no, b->no, c->no, d->no}), (std::vector<int>{4, 2, 3, 1}));
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_FALSE(store.hasChanges());
}

TEST_F(PlayListTest, RemovingTheCurrentTrackHandsOverByModeAndKeepsItPlayingOrPaused) {
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3"}) addSong(name);
    addLyrics("a.lrc", "[00:01.00]one\n");
    engine.player().playItem(url("a.mp3"));
    editor.remove(url("a.mp3"));
    EXPECT_THAT(sent(), Contains(HasSubstr("setPlayList(")));
    EXPECT_TRUE(pageState.playingFilePath == url("b.mp3") && players.last()->playing);
    EXPECT_THAT(*store.fetchLrcEntities(), IsEmpty()) << "its lyrics go with it";
    EXPECT_EQ(pageState.storedMp3Entities->front()->no, 1) << "the rest is numbered from 1";
    engine.player().pause();
    sent();
    editor.remove(url("b.mp3"));
    auto scripts = sent();
    EXPECT_TRUE(pageState.playingFilePath == url("c.mp3") && !players.last()->playing);
    EXPECT_THAT(scripts, Contains(isPlaying(false)));
    EXPECT_EQ(scripts.back().rfind("setPlayList(", 0), 0u);
}

TEST_F(PlayListTest, ClearStopsSendsTheFiveResetsAndTheEmptyListAndKeepsSettings) {
    addSong("a.mp3");
    addLyrics("a.lrc", "[00:01.00]one\n");
    store.insertSettingsEntity()->key = std::string(std::get<0>(kLyricsSettings).key);
    engine.player().playItem(url("a.mp3"));
    sent();
    editor.clear();
    EXPECT_THAT(sent(), UnorderedElementsAre(current("-1"), durationText("-1"), mainFileName(""), isPlaying(false),
                                             playingPath(""), "setPlayList(\"[]\",\"[]\");"));
    EXPECT_TRUE(!players.last()->playing && players.last()->position == 0 && pageState.playingFilePath.empty());
    EXPECT_TRUE(store.fetchMp3Entities()->empty() && store.fetchLrcEntities()->empty());
    EXPECT_EQ(store.fetchSettingsEntities()->size(), 1u);
}

TEST_F(PlayListTest, ACharsetIsStoredAsGivenAndThePlayingTracksLyricsReloadAtOnce) {
    addSong("a.mp3");
    auto lyrics = addLyrics("a.lrc", "[00:01.00]\xC4\xE3\xBA\xC3\n", "utf8");  // "你好" in GB18030
    engine.player().playItem(url("a.mp3"));
    EXPECT_TRUE(engine.player().timeline().empty());
    editor.setCharset(*lyrics->mainPathFileName, "GB18030");
    EXPECT_THAT(engine.player().timeline().wordLineArray, ElementsAre("你好"));
    EXPECT_THAT(sent(), Not(Contains(HasSubstr("setPlayList("))));
    EXPECT_FALSE(store.hasChanges());
    editor.setCharset(*lyrics->mainPathFileName, "not-a-charset");
    EXPECT_EQ(lyrics->charset, "not-a-charset");
}

TEST_F(PlayListTest, ALoadRenumbersByPositionWithEqualOnesInFetchOrderAndDropsLyricsOfNoAudioAfterIt) {
    for (auto [name, no] : {std::pair{"five.mp3", 5}, {"twoA.mp3", 2}, {"twoB.mp3", 2}, {"five.MP3", 7}})
        addSong(name)->no = std::int16_t(no);
    for (auto name : {"five.lrc", "Five.lrc", "x.lrc"}) addLyrics(name, "");
    std::vector<std::string> expected;
    for (const auto& e : store.fetchMp3Entities().value_or(Records<Mp3Entity>{}))
        if (e->no == 2) expected.push_back(*e->fileName);
    expected.insert(expected.end(), {"five.mp3", "five.MP3"});

    internal::CaptureStdout();
    ASSERT_TRUE(playList.loadPlayList());
    std::istringstream out(internal::GetCapturedStdout());
    std::vector<std::string> log;
    for (std::string line; std::getline(out, line);) log.push_back(line);
    EXPECT_EQ(std::count(log.begin(), log.end(), url("five.lrc") + ":found"), 2) << "one per matching audio entry";
    EXPECT_EQ(pageState.storedLrcEntities->size(), 3u) << "this load still carries the orphans";
    queue.drain();
    FakeMainQueue otherQueue;
    Store reopened(dir.file("Tunelark.sqlite"), otherQueue);
    for (const auto& e : reopened.fetchMp3Entities().value_or(Records<Mp3Entity>{}))
        EXPECT_EQ(expected.at(e->no - 1), *e->fileName);
    EXPECT_EQ(reopened.fetchLrcEntities()->size(), 1u);
}

TEST_F(PlayListTest, HostileNamesReachThePageAsTheSameText) {
    addSong("x.mp3")->fileName = "he said \"hi\" \\ </script>\n\xE2\x80\xA8 caf\xC3\xA9 \xFF.mp3";
    playList.sendPlayList();
    auto call = JsCallReader::read(page.scripts.at(0));
    ASSERT_TRUE(call && call->arguments.size() == 2) << page.scripts[0];
    EXPECT_EQ(nlohmann::json::parse(call->arguments[0]).at(0).at("fileName"),
              "he said \"hi\" \\ </script>\n\xE2\x80\xA8 caf\xC3\xA9 \xEF\xBF\xBD.mp3");
}

}  // namespace
}  // namespace tunelark::test
