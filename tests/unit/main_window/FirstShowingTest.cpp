#include "engine/EngineFixture.h"
#include "engine/PlayerHolder.h"
#include "engine/lyrics/CharsetEnum.h"
#include "fakes/FakeMainWindow.h"
#include "library/PlayList.h"
#include "main_window/MainWC.h"
#include "page/JsCallReader.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace tunelark::test {
namespace {

using namespace ::testing;

// The page's first showWindow and the ones after a reload, on a 1920 by 1080 screen.
class FirstShowingTest : public EngineFixture {
protected:
    FirstShowingTest() { screens.screens.push_back(Screen{{0, 0, 1920, 1080}, {0, 0, 1920, 1050}}); }

    FakeMainWindow window;
    FakeScreens screens;
    PlayerHolder engine{deps()};
    PlayList playList{store, queue, *view};
    MainWC mainWC{window, screens, pageState, playList, [](int) {}};
};

TEST_F(FirstShowingTest, TheFirstShowingSendsTheNamesAtOnceThenQueuesListAndModeAndALaterOneNothing) {
    addSong("a.mp3");
    const auto names = allCharsetNames();
    internal::CaptureStdout();
    mainWC.showWindowForPage();
    const std::string log = internal::GetCapturedStdout();
    EXPECT_EQ(log.rfind("isVisible == false\n", 0), 0u);
    EXPECT_THAT(log, HasSubstr("\n启动时，清理一次已存储的播放单文件列表中不需要的lrc文件内容，并发送文件列表给UI\n"));
    EXPECT_THAT(log, HasSubstr("\nnative allSupportedCharsetNamesJsonString::::[\\\"utf8\\\",\\\"utf16\\\","));
    EXPECT_EQ(window.frames, (std::vector<Rect>{{360, 240, 1200, 600}}));
    EXPECT_TRUE(pageState.loaded && window.visible && window.minimumSize == (Rect{0, 0, 1200, 600}));
    ASSERT_EQ(page.scripts.size(), 1u) << "the names go at once";
    auto call = JsCallReader::read(page.scripts[0]);
    ASSERT_TRUE(call && call->function == "setAllSupportedCharsetNames");
    EXPECT_EQ(nlohmann::json::parse(call->arguments.at(0)).get<std::vector<std::string>>(), names);

    pageState.playMode = PlayMode::random;  // read when its call is built
    queue.drain();
    mainWC.showWindowForPage();
    EXPECT_EQ(queue.pending(), 0u) << "a later showing does nothing";
    EXPECT_THAT(std::vector(page.scripts.begin() + 1, page.scripts.end()),
                UnorderedElementsAre("setMode(\"random\");", StartsWith("setPlayList(\"[{")));
}

// A page reloaded after its process ended is told everything again, once, and the window stays put.
class PageRestoreTest : public FirstShowingTest {
protected:
    std::string crash() {
        internal::CaptureStdout();
        mainWC.pageProcessEnded("crashed");
        return internal::GetCapturedStdout();
    }
    // The first script (sent at once) and the queued ones after it.
    std::pair<std::string, std::vector<std::string>> showAgain() {
        mainWC.showWindowForPage();
        const std::string first = page.scripts.empty() ? "" : page.scripts.front();
        auto queued = sent();
        if (!queued.empty()) queued.erase(queued.begin());
        return {first, queued};
    }
};

TEST_F(PageRestoreTest, AfterThePageProcessEndedTheNextShowingResendsPlaybackListModeAndLyricsSwitches) {
    bool lyricsShown = true;
    playList.setLyricsWindowShown([&] { return lyricsShown; });
    addSong("a.mp3");
    mainWC.showWindowForPage();
    engine.player().playItem(url("a.mp3"));
    engine.player().speedUp();
    pageState.playMode = PlayMode::random;
    pageState.displayingRowNum = 2;
    sent();

    EXPECT_EQ(crash(), "Page process ended: crashed; reloading the page\n");
    auto [first, queued] = showAgain();
    EXPECT_THAT(first, StartsWith("setAllSupportedCharsetNames(\"[\\\"utf8\\\","));
    EXPECT_THAT(queued, UnorderedElementsAre(StartsWith("setPlayList(\"[{"), "setMode(\"random\");", speedText("1.25"),
                                             playingPath(url("a.mp3")), isPlaying(true), durationText("03:20"),
                                             mainFileName("a"), "setLyricsSwitches(\"true\",\"towRows\");"));
    EXPECT_TRUE(window.frames.size() == 1u && window.showCount == 1) << "neither moved nor shown again";

    engine.player().pause();
    lyricsShown = false;
    sent();
    EXPECT_TRUE(showAgain().second.empty()) << "one restore per ended process";
    crash();
    EXPECT_THAT(showAgain().second, AllOf(Contains(isPlaying(false)), Contains("setLyricsSwitches(\"false\",\"towRows\");")));
}

TEST_F(PageRestoreTest, AnEndBeforeTheFirstShowingLeavesItAsItIsAndANewPageGetsThePagesOwnDefaults) {
    addSong("a.mp3");
    crash();
    mainWC.showWindowForPage();
    EXPECT_EQ(window.frames.size(), 1u);
    EXPECT_EQ(sent().size(), 3u) << "names, list, mode: the first showing";
    EXPECT_TRUE(showAgain().second.empty());

    crash();
    EXPECT_THAT(showAgain().second,
                UnorderedElementsAre(StartsWith("setPlayList("), "setMode(\"cycle\");", speedText("1.0"), playingPath(""),
                                     isPlaying(false), "setLyricsSwitches(\"false\",\"oneRow\");"))
        << "nothing played: no duration or name, and the switch reads off without a lyrics window";
}

}  // namespace
}  // namespace tunelark::test
