#include "library/AddFiles.h"

#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "library/store/FileNames.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

class AddFilesTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("tl-add-" + std::to_string(::getpid()) + "-" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir / "music");
        store = std::make_unique<Store>((dir / "store.sqlite").string(), queue);
        add = std::make_unique<AddFiles>(*store, dialogs, queue, [this] { ++sends; });
    }
    void TearDown() override {
        add.reset();
        store.reset();
        fs::remove_all(dir);
    }
    std::string file(const std::string& name) {
        auto path = dir / "music" / name;
        std::ofstream(path) << "data";
        return path.string();
    }
    Records<Mp3Entity> audio() { return *store->fetchMp3Entities(); }
    Records<LrcEntity> lyrics() { return *store->fetchLrcEntities(); }
    std::shared_ptr<Mp3Entity> audioNamed(const std::string& name) {
        for (auto& e : audio())
            if (e->fileName == name) return e;
        return nullptr;
    }

    fs::path dir;
    test::FakeMainQueue queue;
    test::FakeDialogs dialogs;
    std::unique_ptr<Store> store;
    std::unique_ptr<AddFiles> add;
    int sends = 0;
};

TEST_F(AddFilesTest, ExplainsThenOpensPanelAndStoresNothingWhenCancelled) {
    add->run();
    ASSERT_EQ(dialogs.alerts.size(), 1u);
    EXPECT_NE(dialogs.alerts[0].find("lrc file must be in the same folder"), std::string::npos);
    ASSERT_EQ(dialogs.panels.size(), 1u);
    EXPECT_EQ(dialogs.panels[0].message, "Please Choose the mp3 file(s) and the lrc file(s):");
    EXPECT_EQ(dialogs.panels[0].extensions, (std::vector<std::string>{"lrc", "mp3"}));
    queue.drain();
    EXPECT_EQ(sends, 0);
    EXPECT_FALSE(store->hasChanges());
}

TEST_F(AddFilesTest, NumbersNewAudioAfterStoredEntriesInUrlOrder) {
    for (int i = 0; i < 3; ++i) add->addPaths({file("old" + std::to_string(i) + ".mp3")});
    queue.drain();
    sends = 0;
    dialogs.chosenFiles.push_back({file("song.mp3"), file("song.lrc"), file("b.mp3"), file("a.mp3")});
    add->run();
    queue.drain();

    EXPECT_EQ(audioNamed("a.mp3")->no, 4);
    EXPECT_EQ(audioNamed("b.mp3")->no, 5);
    EXPECT_EQ(audioNamed("song.mp3")->no, 6);
    EXPECT_EQ(audioNamed("song.mp3")->duration, "00:00");
    ASSERT_EQ(lyrics().size(), 1u);
    EXPECT_EQ(lyrics()[0]->charset, "utf8");
    EXPECT_EQ(lyrics()[0]->mainPathFileName, audioNamed("song.mp3")->mainPathFileName);
    EXPECT_EQ(sends, 1);
    EXPECT_FALSE(store->hasChanges());
}

TEST_F(AddFilesTest, AddingKnownFilesAgainRefreshesButKeepsNumberCharsetAndMark) {
    add->addPaths({file("a.mp3"), file("b.mp3"), file("b.lrc")});
    queue.drain();
    auto b = audioNamed("b.mp3");
    b->canNotUseNow = true;
    b->duration = "03:00";
    b->bookmark = Bytes{1, 2, 3};
    lyrics()[0]->charset = "GB18030";
    store->saveNow();

    add->addPaths({file("b.mp3"), file("b.lrc")});
    queue.drain();
    EXPECT_EQ(audio().size(), 2u);
    EXPECT_EQ(b->no, 2);
    EXPECT_TRUE(b->canNotUseNow);
    EXPECT_EQ(b->duration, "00:00");
    EXPECT_NE(b->bookmark, (Bytes{1, 2, 3}));
    ASSERT_EQ(lyrics().size(), 1u);
    EXPECT_EQ(lyrics()[0]->charset, "GB18030");
}

TEST_F(AddFilesTest, ExtensionIsTestedOnLastThreeCharactersInAnyCase) {
    add->addPaths({file("LOUD.MP3"), file("Words.LrC"), file("notes.xmp3"), file("cover.jpg"), file("readme")});
    queue.drain();
    EXPECT_NE(audioNamed("LOUD.MP3"), nullptr);
    EXPECT_NE(audioNamed("notes.xmp3"), nullptr);
    EXPECT_EQ(audio().size(), 2u);
    EXPECT_EQ(lyrics().size(), 1u);
}

TEST_F(AddFilesTest, FileWhoseBookmarkCannotBeMadeIsSkippedAndOthersAdded) {
    auto gone = (dir / "music" / "gone.mp3").string();
    add->addPaths({gone, file("here.mp3")});
    queue.drain();
    ASSERT_EQ(audio().size(), 1u);
    EXPECT_EQ(audio()[0]->fileName, "here.mp3");
    EXPECT_EQ(audio()[0]->no, 1);
}

TEST_F(AddFilesTest, PathIsStoredAsEncodedUrlAndNameDecoded) {
    add->addPaths({file("My Song #1 100%.mp3")});
    queue.drain();
    auto entry = audio()[0];
    EXPECT_EQ(entry->fileName, "My Song #1 100%.mp3");
    EXPECT_EQ(entry->filePath, fileUrlFromPath((dir / "music" / "My Song #1 100%.mp3").string()));
    EXPECT_EQ(entry->filePath->find(' '), std::string::npos);
    EXPECT_EQ(entry->mainPathFileName, getMainPathFileName(*entry->filePath));
}

TEST_F(AddFilesTest, AudioBeyondTheLargestNumberIsRefusedWithOneAlert) {
    for (int i = 1; i < AddFiles::kMaxNo; ++i) {
        auto entry = store->insertMp3Entity();
        entry->no = static_cast<std::int16_t>(i);
        entry->filePath = "file:///stored/" + std::to_string(i) + ".mp3";
    }
    ASSERT_FALSE(store->saveNow());
    add->addPaths({file("a.mp3"), file("b.mp3"), file("c.mp3"), file("c.lrc")});
    queue.drain();
    EXPECT_EQ(audioNamed("a.mp3")->no, AddFiles::kMaxNo);
    EXPECT_EQ(audioNamed("b.mp3"), nullptr);
    EXPECT_EQ(audioNamed("c.mp3"), nullptr);
    ASSERT_EQ(dialogs.alerts.size(), 1u);
    EXPECT_NE(dialogs.alerts[0].find("32767"), std::string::npos);
    EXPECT_EQ(lyrics().size(), 1u);  // lyric files need no number
    EXPECT_EQ(sends, 1);
}

}  // namespace
}  // namespace tunelark
