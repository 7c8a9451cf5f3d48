#include "library/PlayList.h"

#include "bridge/JsCallReader.h"
#include "bridge/MainVC.h"
#include "engine/lyrics/CharsetEnum.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakeMainWindow.h"
#include "fakes/FakePageView.h"
#include "library/store/FileNames.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace tunelark {
namespace {

using test::JsCallReader;

// A fresh folder for one test's store, removed afterwards.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tl-playlist-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

std::size_t count(const std::vector<std::string>& lines, const std::string& line) {
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

class PlayListTest : public ::testing::Test {
protected:
    PlayListTest() { reopen(); }

    void reopen() {
        playList.reset();
        store.reset();
        store = std::make_unique<Store>(dir.file("Tunelark.sqlite"), queue);
        playList = std::make_unique<PlayList>(*store, queue);
    }

    std::shared_ptr<Mp3Entity> addAudio(const std::string& url, int no) {
        auto entity = store->insertMp3Entity();
        entity->fileName = lastComponentDecoded(url);
        entity->filePath = url;
        entity->mainPathFileName = getMainPathFileName(url);
        entity->no = static_cast<std::int16_t>(no);
        return entity;
    }

    std::shared_ptr<LrcEntity> addLyric(const std::string& url, std::optional<std::string> charset = "utf8") {
        auto entity = store->insertLrcEntity();
        entity->fileName = lastComponentDecoded(url);
        entity->filePath = url;
        entity->mainPathFileName = getMainPathFileName(url);
        entity->charset = std::move(charset);
        return entity;
    }

    void save() { ASSERT_EQ(store->saveNow(), std::nullopt); }

    std::vector<std::string> storedLyricPaths() {
        std::vector<std::string> paths;
        const auto fetched = store->fetchLrcEntities();
        for (const auto& e : fetched.value()) paths.push_back(*e->filePath);
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    // Runs an action with stdout captured; returns its lines.
    template <typename Action>
    std::vector<std::string> console(Action action) {
        ::testing::internal::CaptureStdout();
        action();
        return lines(::testing::internal::GetCapturedStdout());
    }

    ScratchFolder dir;
    test::FakeMainQueue queue;
    test::FakePageView page;
    MainVC view{queue, &page};
    std::unique_ptr<Store> store;
    std::unique_ptr<PlayList> playList;
};

TEST_F(PlayListTest, NumbersByPositionWithEqualPositionsInFetchOrder) {
    addAudio("file:///M/five.mp3", 5);
    addAudio("file:///M/twoA.mp3", 2);
    addAudio("file:///M/twoB.mp3", 2);
    addAudio("file:///M/nine.mp3", 9);
    save();
    std::vector<std::string> twosInFetchOrder;
    const auto fetched = store->fetchMp3Entities();
    for (const auto& e : fetched.value())
        if (e->no == 2) twosInFetchOrder.push_back(*e->fileName);

    std::optional<PlayListRecords> records;
    console([&] { records = playList->loadPlayList(); });
    ASSERT_TRUE(records);
    std::vector<std::string> names;
    for (const auto& item : records->mp3FileItems) {
        names.push_back(item.fileName);
        EXPECT_EQ(item.no, static_cast<int>(names.size()));
        EXPECT_EQ(item.duration, "");
    }
    EXPECT_EQ(names, (std::vector<std::string>{twosInFetchOrder[0], twosInFetchOrder[1], "five.mp3", "nine.mp3"}));

    ASSERT_TRUE(view.storedMp3Entities);
    ASSERT_EQ(view.storedMp3Entities->size(), 4u);
    EXPECT_EQ(*view.storedMp3Entities->at(2)->fileName, "five.mp3");

    queue.drain();  // the queued save
    reopen();
    std::vector<std::pair<std::string, int>> stored;
    const auto refetched = store->fetchMp3Entities();
    for (const auto& e : refetched.value()) stored.emplace_back(*e->fileName, e->no);
    std::sort(stored.begin(), stored.end(), [](auto& a, auto& b) { return a.second < b.second; });
    EXPECT_EQ(stored, (std::vector<std::pair<std::string, int>>{
                          {twosInFetchOrder[0], 1}, {twosInFetchOrder[1], 2}, {"five.mp3", 3}, {"nine.mp3", 4}}));
}

TEST_F(PlayListTest, LyricEntriesWithoutTheirAudioAreDeletedAfterThisLoadsMessage) {
    addAudio("file:///M/song.mp3", 1);
    addAudio("file:///M/a.mp3", 2);
    addAudio("file:///M/twice.mp3", 3);
    addAudio("file:///M/twice.MP3", 4);
    addLyric("file:///M/song.lrc");
    addLyric("file:///M/a.LRC");
    addLyric("file:///M/twice.lrc");
    addLyric("file:///Other/song.lrc");
    addLyric("file:///M/Song.lrc");
    save();

    std::optional<PlayListRecords> records;
    const auto log = console([&] { records = playList->loadPlayList(); });
    ASSERT_TRUE(records);
    EXPECT_EQ(records->lrcFileItems.size(), 5u) << "this load still carries the orphans";
    EXPECT_EQ(count(log, "file:///M/song.lrc:found"), 1u);
    EXPECT_EQ(count(log, "file:///M/a.LRC:found"), 1u);
    EXPECT_EQ(count(log, "file:///M/twice.lrc:found"), 2u) << "one line per matching audio entry";
    EXPECT_EQ(count(log, "file:///Other/song.lrc:not found"), 1u);
    EXPECT_EQ(count(log, "file:///M/Song.lrc:not found"), 1u);
    EXPECT_EQ(count(log, "lrcEntity.mainPathFileName!:::file:///M/Song"), 1u);
    EXPECT_EQ(count(log, "fileName:::song.mp3"), 1u);
    EXPECT_EQ(count(log, "filePath:::file:///M/song.mp3"), 1u);
    EXPECT_EQ(view.storedLrcEntities->size(), 5u) << "the main view keeps what this load fetched";

    queue.drain();
    reopen();
    EXPECT_EQ(storedLyricPaths(),
              (std::vector<std::string>{"file:///M/a.LRC", "file:///M/song.lrc", "file:///M/twice.lrc"}));
    EXPECT_EQ(playList->loadPlayList()->lrcFileItems.size(), 3u);
}

TEST_F(PlayListTest, SendsTheRecordsAsEscapedJsonInFieldOrder) {
    addAudio("file:///M/%E6%AD%8C.mp3", 7);
    addLyric("file:///M/%E6%AD%8C.lrc", std::nullopt);
    save();

    const auto log = console([&] { playList->sendPlayList(); });
    const std::string mp3 =
        R"([{\"fileName\":\"歌.mp3\",\"filePath\":\"file:///M/%E6%AD%8C.mp3\",\"no\":1,\"duration\":\"\",)"
        R"(\"mainPathFileName\":\"file:///M/%E6%AD%8C\"}])";
    const std::string lrc =
        R"([{\"fileName\":\"歌.lrc\",\"filePath\":\"file:///M/%E6%AD%8C.lrc\",\"charset\":\"utf8\",)"
        R"(\"mainPathFileName\":\"file:///M/%E6%AD%8C\"}])";
    ASSERT_EQ(page.scripts.size(), 1u);
    EXPECT_EQ(page.scripts[0], "setPlayList(\"" + mp3 + "\",\"" + lrc + "\");");
    EXPECT_EQ(count(log, "native mp3FileItemsJsonString::::" + mp3), 1u);
    EXPECT_EQ(count(log, "native lrcFileItemsJsonString::::" + lrc), 1u);
}

TEST_F(PlayListTest, HostileFileNamesReachThePageAsTheSameJson) {
    const std::string hostile = "he said \"hi\" \\ </script>\n\xE2\x80\xA8 caf\xC3\xA9 \xFF.mp3";
    auto entity = addAudio("file:///M/x.mp3", 1);
    entity->fileName = hostile;
    save();

    console([&] { playList->sendPlayList(); });
    ASSERT_EQ(page.scripts.size(), 1u);
    auto call = JsCallReader::read(page.scripts[0]);
    ASSERT_TRUE(call) << page.scripts[0];
    ASSERT_EQ(call->arguments.size(), 2u);
    const auto items = nlohmann::json::parse(call->arguments[0]);
    const std::string expected = "he said \"hi\" \\ </script>\n\xE2\x80\xA8 caf\xC3\xA9 \xEF\xBF\xBD.mp3";
    EXPECT_EQ(items.at(0).at("fileName"), expected);
    EXPECT_EQ(call->arguments[1], "[]");
}

TEST_F(PlayListTest, SendsExactlyTheEmptyFormWithoutAudio) {
    console([&] { playList->sendPlayList(); });
    addLyric("file:///M/orphan.lrc");
    save();
    const auto log = console([&] { playList->sendPlayList(); });
    EXPECT_EQ(page.scripts, (std::vector<std::string>(2, "setPlayList(\"[]\",\"[]\");")));
    EXPECT_EQ(count(log, "file:///M/orphan.lrc:not found"), 1u);
    queue.drain();
    EXPECT_TRUE(storedLyricPaths().empty());
}

TEST_F(PlayListTest, AnEntryWithoutItsTextsSendsTheEmptyListAndChangesNothing) {
    addAudio("file:///M/b.mp3", 9);
    addAudio("file:///M/a.mp3", 4)->filePath.reset();
    addLyric("file:///M/orphan.lrc");
    save();

    const auto log = console([&] { playList->sendPlayList(); });
    EXPECT_EQ(page.scripts, (std::vector<std::string>{"setPlayList(\"[]\",\"[]\");"}));
    EXPECT_FALSE(store->hasChanges());
    EXPECT_EQ(storedLyricPaths(), (std::vector<std::string>{"file:///M/orphan.lrc"}));
    EXPECT_FALSE(view.storedMp3Entities.has_value());
    EXPECT_FALSE(log.empty()) << "the reason is logged";
}

TEST_F(PlayListTest, NothingIsSentWithoutAWebView) {
    addAudio("file:///M/a.mp3", 1);
    save();
    view.wkWebView = nullptr;
    console([&] { playList->sendPlayList(); });
    EXPECT_TRUE(page.scripts.empty());
}

class ShowWindowTest : public PlayListTest {
protected:
    ShowWindowTest() { screens.screens.push_back(Screen{{0, 0, 1920, 1080}, {0, 0, 1920, 1050}}); }
    test::FakeMainWindow window;
    test::FakeScreens screens;
};

TEST_F(ShowWindowTest, FirstShowingSizesShowsAndSendsNamesThenQueuesListAndMode) {
    addAudio("file:///M/a.mp3", 1);
    save();
    const auto log = console([&] { playList->showWindow(window, screens); });

    ASSERT_GE(log.size(), 3u);
    EXPECT_EQ(log.front(), "isVisible == false");
    EXPECT_EQ(count(log, "启动时，清理一次已存储的播放单文件列表中不需要的lrc文件内容，并发送文件列表给UI"), 1u);
    EXPECT_EQ(log.back().rfind("native allSupportedCharsetNamesJsonString::::[\\\"utf8\\\",\\\"utf16\\\",", 0), 0u);
    EXPECT_TRUE(view.loaded);
    EXPECT_EQ(window.frames, (std::vector<Rect>{{360, 240, 1200, 600}}));
    EXPECT_EQ(window.minimumSize, (Rect{0, 0, 1200, 600}));
    EXPECT_TRUE(window.visible);

    ASSERT_EQ(page.scripts.size(), 1u) << "the names go at once, the rest is queued";
    EXPECT_EQ(page.scripts[0].rfind("setAllSupportedCharsetNames(\"[\\\"utf8\\\",\\\"utf16\\\",", 0), 0u);
    auto call = JsCallReader::read(page.scripts[0]);
    ASSERT_TRUE(call);
    std::vector<std::string> names;
    console([&] { names = allCharsetNames(); });
    EXPECT_EQ(nlohmann::json::parse(call->arguments.at(0)).get<std::vector<std::string>>(), names);

    view.playMode = "random";  // the mode is read when its call is built
    console([&] { queue.drain(); });
    ASSERT_EQ(page.scripts.size(), 3u);
    std::vector<std::string> queued(page.scripts.begin() + 1, page.scripts.end());
    std::sort(queued.begin(), queued.end());
    EXPECT_EQ(queued[0], "setMode(\"random\");");
    EXPECT_EQ(queued[1].rfind("setPlayList(\"[{\\\"fileName\\\":\\\"a.mp3\\\"", 0), 0u);
}

TEST_F(ShowWindowTest, ALaterShowingDoesNothing) {
    console([&] {
        playList->showWindow(window, screens);
        queue.drain();
    });
    const auto scripts = page.scripts.size();
    const auto log = console([&] { playList->showWindow(window, screens); });
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(queue.pending(), 0u);
    EXPECT_EQ(page.scripts.size(), scripts);
    EXPECT_EQ(window.frames.size(), 1u);
    EXPECT_EQ(window.showCount, 1);
}

}  // namespace
}  // namespace tunelark
