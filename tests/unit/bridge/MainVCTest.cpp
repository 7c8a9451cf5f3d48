#include "bridge/MainVC.h"

#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using test::FakeMainQueue;
using test::FakePageView;

TEST(MainVC, PageCallsArePostedAndEvaluatedInOrder) {
    FakeMainQueue queue;
    FakePageView page;
    MainVC view(queue, &page);

    view.setIsPlaying(true);
    view.setPlayingFilePath("file:///M/a.mp3");
    view.setMainFileName("a");
    view.setDuration("03:20");
    view.setCurrent("00:00");
    view.setSliderCurrentValue(0);
    view.setSpeed("1.0");
    view.setIsPlaying(false);
    EXPECT_TRUE(page.scripts.empty()) << "a page call never runs inside its caller";

    queue.drain();
    const std::vector<std::string> expected = {
        "setIsPlaying(true);",          "setPlayingFilePath(\"file:///M/a.mp3\");",
        "setMainFileName(\"a\");",      "setDuration(\"03:20\");",
        "setCurrent(\"00:00\");",       "setSliderCurrentValue(0);",
        "setSpeed(\"1.0\");",           "setIsPlaying(false);",
    };
    EXPECT_EQ(page.scripts, expected);
}

TEST(MainVC, SetModeReadsThePlayModeWhenTheScriptIsBuilt) {
    FakeMainQueue queue;
    FakePageView page;
    MainVC view(queue, &page);

    view.setMode();
    view.playMode = "random";
    view.setMode();
    view.playMode = "sequence";
    queue.drain();
    EXPECT_EQ(page.scripts, (std::vector<std::string>{"setMode(\"sequence\");", "setMode(\"sequence\");"}));
}

TEST(MainVC, EscapesADisplayNameThatWouldBreakTheScript) {
    FakeMainQueue queue;
    FakePageView page;
    MainVC view(queue, &page);
    view.setMainFileName("a \"quoted\"\nname");
    queue.drain();
    EXPECT_EQ(page.scripts, (std::vector<std::string>{R"(setMainFileName("a \"quoted\"\nname");)"}));
}

TEST(MainVC, CallsAreDroppedWithoutAWebView) {
    FakeMainQueue queue;
    FakePageView page;
    MainVC view(queue, &page);
    view.setCurrent("00:01");
    view.wkWebView = nullptr;  // gone before the task runs
    queue.drain();
    EXPECT_TRUE(page.scripts.empty());

    view.evaluate("setIsPlaying(true);");
    EXPECT_TRUE(page.scripts.empty());
}

TEST(MainVC, CallsAreDroppedWhenTheMainViewIsGone) {
    FakeMainQueue queue;
    FakePageView page;
    auto view = std::make_unique<MainVC>(queue, &page);
    EXPECT_EQ(MainVC::shared, view.get());
    view->setIsPlaying(true);
    view.reset();
    EXPECT_EQ(MainVC::shared, nullptr);
    EXPECT_EQ(queue.drain(), 1);
    EXPECT_TRUE(page.scripts.empty());
}

TEST(MainVC, TheNewestViewTakesTheSlotAndReceivesQueuedCalls) {
    FakeMainQueue queue;
    FakePageView oldPage;
    FakePageView newPage;
    MainVC older(queue, &oldPage);
    older.setIsPlaying(true);
    MainVC newer(queue, &newPage);
    EXPECT_EQ(MainVC::shared, &newer);
    queue.drain();
    EXPECT_TRUE(oldPage.scripts.empty());
    EXPECT_EQ(newPage.scripts, (std::vector<std::string>{"setIsPlaying(true);"}));
}

}  // namespace
}  // namespace tunelark
