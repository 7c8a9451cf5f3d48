// Page calls through the real web view: the values the page's functions receive, in order, whatever the
// texts hold. Runs inside tests/support/with-session.sh (it needs a display).
#include "LoadedPage.h"
#include "MainLoop.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>

namespace tunelark::test {
namespace {

// Functions of the test's own that note what they were given; "fail" throws after noting.
constexpr const char* kRecorder = R"JS(
window.got = [];
window.note = (...values) => { got.push(values); };
window.fail = (...values) => { got.push(['fail'].concat(values)); throw new Error('as asked'); };
window.report = () => window.webkit.messageHandlers.callsProbe.postMessage(JSON.stringify(got));
)JS";

// The real page, loaded, with the recorder; `got` holds what report() posts.
class PageCalls : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(gtk_init_check(nullptr, nullptr)) << "no display";
        page_.emplace();
        view().registerHandler("callsProbe", [this](const std::string& body) {
            got = nlohmann::json::parse(nlohmann::json::parse(body).get<std::string>());
        });
        view().loadPage();
        ASSERT_TRUE(runUntil([&] { return page_->finished(); }, std::chrono::seconds(30))) << "the page did not load";
        view().evaluate(kRecorder);
    }
    WkWebViewWithMouseEvent& view() { return page_->view(); }

    nlohmann::json got;

private:
    std::optional<LoadedPage> page_;  // made once GTK is up
};

TEST_F(PageCalls, ThePageGetsEveryValueAsGivenAndInOrder) {
    WkWebViewWithMouseEvent& view = this->view();

    const std::string hostile = "\"); note('injected'); (\" \\ </script> \n\xE2\x80\xA8 歌词 🎵 ${x} `";
    view.callAll({PageCall{"note", {std::string("00:07"), std::int64_t{-4321}}},
                  PageCall{"fail", {true}},  // the calls after it still run
                  PageCall{"note", {hostile, false}}});
    view.evaluate("note('between');");
    // Text that is not UTF-8 reaches the page with each bad byte as U+FFFD, the NUL kept.
    view.callAll({PageCall{"note", {std::string("caf\xE9")}}, PageCall{"note", {std::string("a\0b", 3)}}});
    view.callAll({PageCall{"report", {}}});
    ASSERT_TRUE(runUntil([&] { return !got.is_null(); }, std::chrono::seconds(30))) << "no report";

    const nlohmann::json expected = nlohmann::json::parse(R"([["00:07", -4321], ["fail", true]])");
    ASSERT_EQ(got.size(), 6U) << got.dump();
    EXPECT_EQ(got[0], expected[0]);
    EXPECT_EQ(got[1], expected[1]);
    EXPECT_EQ(got[2], (nlohmann::json::array({hostile, false})));
    EXPECT_EQ(got[3], nlohmann::json::array({"between"}));
    EXPECT_EQ(got[4], nlohmann::json::array({"caf\xEF\xBF\xBD"}));
    EXPECT_EQ(got[5], nlohmann::json::array({std::string("a\0b", 3)}));
}

// Out of sight the calls wait, then come all together in their order: after the delay, before a script
// evaluated later, or as soon as the page is in sight again.
TEST_F(PageCalls, OutOfSightTheyWaitAndKeepTheirOrder) {
    WkWebViewWithMouseEvent& view = this->view();

    view.setInSight(false);
    view.callAll({PageCall{"note", {std::int64_t{1}}}});
    view.callAll({PageCall{"note", {std::int64_t{2}}}, PageCall{"report", {}}});
    EXPECT_FALSE(runUntil([&] { return !got.is_null(); }, std::chrono::milliseconds(300))) << "not held";
    ASSERT_TRUE(runUntil([&] { return !got.is_null(); }, std::chrono::seconds(10))) << "never sent";
    EXPECT_EQ(got, nlohmann::json::parse("[[1], [2]]"));

    got = nullptr;
    view.callAll({PageCall{"note", {std::int64_t{3}}}});
    view.evaluate("note('evaluated');");
    view.callAll({PageCall{"report", {}}});
    EXPECT_FALSE(runUntil([&] { return !got.is_null(); }, std::chrono::milliseconds(300))) << "not held";
    view.setInSight(true);
    ASSERT_TRUE(runUntil([&] { return !got.is_null(); }, std::chrono::seconds(10))) << "not sent when in sight";
    EXPECT_EQ(got, nlohmann::json::parse(R"([[1], [2], [3], ["evaluated"]])"));

}

}  // namespace
}  // namespace tunelark::test
