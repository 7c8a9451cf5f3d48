#include "platform/glib/AppInfoFile.h"
#include "platform/glib/GlibMainQueue.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using namespace std::chrono_literals;

// Iterates the default context until done() or a generous bound, so a regression fails instead of hanging.
bool spinUntil(const std::function<bool()>& done, std::chrono::seconds bound = 10s) {
    const auto deadline = std::chrono::steady_clock::now() + bound;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        g_main_context_iteration(nullptr, FALSE);
    }
    return true;
}

void spinBriefly() {
    for (int i = 0; i < 50; ++i) g_main_context_iteration(nullptr, FALSE);
}

TEST(GlibMainQueueTest, ManyTasksRunInPostingOrderAfterThePost) {
    GlibMainQueue queue;
    std::vector<int> ran;
    for (int i = 0; i < 10000; ++i) {
        queue.post([&, i] {
            ran.push_back(i);
            // Posted from inside a task: goes behind everything already waiting.
            if (i % 1000 == 0) queue.post([&, i] { ran.push_back(100000 + i); });
        });
    }
    EXPECT_TRUE(ran.empty());
    ASSERT_TRUE(spinUntil([&] { return ran.size() == 10010; }));
    std::vector<int> expected;
    for (int i = 0; i < 10000; ++i) expected.push_back(i);
    for (int i = 0; i < 10000; i += 1000) expected.push_back(100000 + i);
    EXPECT_EQ(ran, expected);
}

TEST(GlibMainQueueTest, AThrowingTaskDoesNotStopTheOthers) {
    GlibMainQueue queue;
    std::vector<std::string> ran;
    queue.post([&] { ran.push_back("a"); });
    queue.post([] { throw std::runtime_error("task failed on purpose"); });
    queue.post([] { throw 42; });
    queue.post([&] { ran.push_back("b"); });
    ASSERT_TRUE(spinUntil([&] { return ran.size() == 2; }));
    EXPECT_EQ(ran, (std::vector<std::string>{"a", "b"}));
}

TEST(GlibMainQueueTest, TasksAndTimersKeepRunningInsideANestedLoop) {
    // A modal dialog runs a nested loop on the default context; the rest of the program goes on.
    GlibMainQueue queue;
    std::vector<std::string> ran;
    int ticks = 0;
    auto timer = queue.startRepeating(5ms, [&] { ++ticks; });
    queue.post([&] {
        ran.push_back("modal start");
        queue.post([&] { ran.push_back("posted during modal"); });
        const bool finished = spinUntil([&] { return ran.size() >= 3 && ticks >= 3; });
        ran.push_back(finished ? "modal end" : "modal timed out");
    });
    queue.post([&] { ran.push_back("posted before modal ran"); });
    ASSERT_TRUE(spinUntil([&] { return ran.size() == 4; }));
    EXPECT_EQ(ran, (std::vector<std::string>{"modal start", "posted before modal ran", "posted during modal",
                                             "modal end"}));
}

TEST(GlibMainQueueTest, DestroyedTimerNeverFiresAgain) {
    GlibMainQueue queue;
    int ticks = 0;
    auto timer = queue.startRepeating(1ms, [&] { ++ticks; });
    ASSERT_TRUE(spinUntil([&] { return ticks >= 2; }));
    timer.reset();
    const int atStop = ticks;
    int later = 0;
    auto witness = queue.startRepeating(3ms, [&] { ++later; });
    ASSERT_TRUE(spinUntil([&] { return later >= 5; }));
    EXPECT_EQ(ticks, atStop);
}

TEST(GlibMainQueueTest, TimerMayDestroyItselfFromItsAction) {
    GlibMainQueue queue;
    int ticks = 0;
    std::unique_ptr<RepeatingTimer> timer;
    timer = queue.startRepeating(1ms, [&] {
        ++ticks;
        timer.reset();
    });
    ASSERT_TRUE(spinUntil([&] { return timer == nullptr; }));
    spinBriefly();
    EXPECT_EQ(ticks, 1);
}

TEST(GlibMainQueueTest, TasksLeftInADestroyedQueueAreDropped) {
    bool ran = false;
    {
        GlibMainQueue queue;
        queue.post([&] { ran = true; });
        EXPECT_EQ(queue.pending(), 1u);
    }
    spinBriefly();
    EXPECT_FALSE(ran);
}

class AppInfoFileTest : public ::testing::Test {
protected:
    std::string path = std::string(g_get_tmp_dir()) + "/tunelark-appinfo-test-" + std::to_string(g_random_int());
    void TearDown() override { std::remove(path.c_str()); }
    std::vector<std::string> read(const std::string& text) {
        std::ofstream(path) << text;
        return readQueriesSchemes(path);
    }
};

TEST_F(AppInfoFileTest, ReadsTheSchemeListAndToleratesItsAbsence) {
    EXPECT_EQ(read("# comment\n[Application]\nLSApplicationQueriesSchemes=mailto;https;\n"),
              (std::vector<std::string>{"mailto", "https"}));
    EXPECT_EQ(read("[Application]\nLSApplicationQueriesSchemes=tg;;Weixin\n"),
              (std::vector<std::string>{"tg", "Weixin"}));
    EXPECT_TRUE(read("[Application]\nOther=1\n").empty());
    EXPECT_TRUE(read("[Elsewhere]\nLSApplicationQueriesSchemes=mailto;\n").empty());
    EXPECT_TRUE(read("this is not a key file\n").empty());
    EXPECT_TRUE(readQueriesSchemes(path + ".missing").empty());
}

}  // namespace
}  // namespace tunelark
