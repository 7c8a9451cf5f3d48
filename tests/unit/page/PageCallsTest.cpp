#include "page/JsCallReader.h"
#include "page/MainVC.h"
#include "page/PageCalls.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

using test::JsCallReader;
using Texts = std::vector<std::string>;

TEST(PageCalls, ScriptsHaveTheirExactForms) {
    EXPECT_EQ(setIsPlayingCall(true).script() + setIsPlayingCall(false).script(), "setIsPlaying(true);setIsPlaying(false);");
    EXPECT_EQ(setSliderCurrentValueCall(-7).script(), "setSliderCurrentValue(-7);");
    EXPECT_EQ(setPlayListScript("[]", "[]"), R"(setPlayList("[]","[]");)");
    EXPECT_EQ(setPlayListScript(R"([{"fileName":"a.mp3","no":1}])", R"(["<"])"),
              R"(setPlayList("[{\"fileName\":\"a.mp3\",\"no\":1}]","[\"\u003c\"]");)");
    EXPECT_EQ(setAllSupportedCharsetNamesScript(R"(["utf8"])"), R"(setAllSupportedCharsetNames("[\"utf8\"]");)");
    EXPECT_EQ(setModeCall("cycle").script() + setPlayingFilePathCall("file:///a%20b").script() + setMainFileNameCall("歌词 café").script(),
              R"(setMode("cycle");setPlayingFilePath("file:///a%20b");setMainFileName("歌词 café");)");
    EXPECT_EQ(setDurationCall("62:05").script() + setCurrentCall("-1").script() + setSpeedCall("1.50").script(),
              R"(setDuration("62:05");setCurrent("-1");setSpeed("1.50");)");
}

TEST(PageCalls, HostileTextsReachThePageUnchanged) {
    const Texts hostile = {"say \"hi\"", "ends with backslash \\", "\\\"); alert(1); (\"", "line\nbreak\rreturn",
                           "line\xE2\x80\xA8separator, paragraph\xE2\x80\xA9separator", "</script><script>x()<!--",
                           std::string("nul\0byte", 8), "tab\tbell\a del\x7F esc\x1B", "'single' `back` ${x} 歌词 🎵"};
    const std::pair<const char*, std::string (*)(std::string_view)> builders[] = {
        {"setMode", [](std::string_view t) { return setModeCall(t).script(); }}, {"setPlayingFilePath", [](std::string_view t) { return setPlayingFilePathCall(t).script(); }}, {"setCurrent", [](std::string_view t) { return setCurrentCall(t).script(); }},
        {"setMainFileName", [](std::string_view t) { return setMainFileNameCall(t).script(); }}, {"setDuration", [](std::string_view t) { return setDurationCall(t).script(); }}, {"setSpeed", [](std::string_view t) { return setSpeedCall(t).script(); }},
        {"setAllSupportedCharsetNames", setAllSupportedCharsetNamesScript}};
    for (const auto& [function, build] : builders) {
        for (const auto& text : hostile) {
            const std::string script = build(text);
            const auto call = JsCallReader::read(script);
            ASSERT_TRUE(call) << script;
            EXPECT_EQ(call->function, function);
            EXPECT_EQ(call->arguments, Texts{text}) << script;
            EXPECT_EQ(script.find('<'), std::string::npos) << script;
        }
    }
    const std::string list = nlohmann::json(hostile).dump();
    EXPECT_EQ(JsCallReader::read(setPlayListScript(list, "[]"))->arguments, (Texts{list, "[]"}));
}

TEST(PageCalls, EachInvalidByteBecomesAReplacementCharacter) {
    const std::string r = "\xEF\xBF\xBD";
    const std::pair<std::string, std::string> cases[] = {
        {"a\xFF" "b", "a" + r + "b"}, {"\x80x", r + "x"}, {"\xE2\x82" "A", r + r + "A"}, {"\xF0\x9F\x8E", r + r + r},
        {"\xC0\xAF", r + r}, {"\xED\xA0\x80", r + r + r}, {"\xF4\x90\x80\x80", r + r + r + r},  // beyond U+10FFFF
        {"caf\xE9", "caf" + r}, {"\xC3\xA9\xFF\xE2\x82\xAC", "\xC3\xA9" + r + "\xE2\x82\xAC"}, {"\xC3\"", r + "\""}};
    for (const auto& [bytes, received] : cases) {
        const auto call = JsCallReader::read(setMainFileNameCall(bytes).script());
        ASSERT_TRUE(call) << received;
        EXPECT_EQ(call->arguments, Texts{received});
    }
}

TEST(MainVC, PageCallsRunLaterInOrderAndOnlyWithAView) {
    test::FakeMainQueue queue;
    test::FakePageView page;
    PageState state;
    auto view = std::make_unique<MainVC>(queue, &page, state);
    view->setIsPlaying(true);
    view->setMode();
    state.playMode = PlayMode::random;  // read when the script is built
    view->setMainFileName("\"\n");
    EXPECT_TRUE(page.scripts.empty()) << "a page call never runs inside its caller";
    queue.drain();
    EXPECT_EQ(page.scripts, (Texts{"setIsPlaying(true);", R"(setMode("random");)", R"(setMainFileName("\"\n");)"}));
    view.reset();
    MainVC withoutPage{queue, nullptr, state};
    withoutPage.setCurrent("00:01");
    queue.drain();
    auto view2 = std::make_unique<MainVC>(queue, &page, state);
    view2->setCurrent("00:02");
    view2.reset();
    EXPECT_EQ(MainVC::shared, nullptr);
    EXPECT_EQ(queue.drain(), 1);
    EXPECT_EQ(page.scripts.size(), 3u) << "dropped without a web view or a main view";
}

}  // namespace
}  // namespace tunelark
