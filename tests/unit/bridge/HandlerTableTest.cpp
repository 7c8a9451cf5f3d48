#include "bridge/HandlerTable.h"

#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tunelark {
namespace {

using Lines = std::vector<std::string>;

// Seams that record each call as text, such as "moveItem(1,3)".
BridgeOperations recording(Lines& c) {
    BridgeOperations o;
#define PLAIN(f) o.f = [&c] { c.push_back(#f); }
#define ONE(f) o.f = [&c](auto a) { std::ostringstream s; s << #f "(" << a << ")"; c.push_back(s.str()); }
#define TWO(f) \
    o.f = [&c](auto a, auto b) { std::ostringstream s; s << #f "(" << a << ',' << b << ')'; c.push_back(s.str()); }
    PLAIN(showWindow), PLAIN(startMoveWindow), ONE(doCopy), ONE(alert), PLAIN(changeMaxMin), PLAIN(toAddMp3);
    PLAIN(clearPlayList), TWO(setCharset), ONE(remove), PLAIN(play), ONE(playItem), PLAIN(pause), PLAIN(changeMode);
    PLAIN(playNext), PLAIN(playPrev), ONE(setCurrentPercent), TWO(turnLyricsOn), ONE(setRowMode);
    PLAIN(playNextLyric), PLAIN(playPrevLyric), PLAIN(speedUp), PLAIN(speedDown), TWO(moveItem);
    return o;
}

struct Row {
    const char* message;
    const char* console;  // nullptr: no line; otherwise the prefix, followed by the body when withBody
    bool withBody, queued;
    const char* body;     // a well-formed body, as a string map when it starts with {"
    const char* call;     // what that body causes; "" for nothing
    const char* onEmpty;  // what the body {} causes: the defaults at work (nullptr: tested below)
};

const Row kRows[] = {
    {"showWindow", "showWindow", false, true, "null", "showWindow", "showWindow"},
    {"startMoveWindow", "startMoveWindow", true, true, "null", "startMoveWindow", "startMoveWindow"},
    {"stopMoveWindow", "stopWindow", true, false, "null", "", ""},
    {"nativeLog", nullptr, false, false, "\"hello\"", "", ""},
    {"nativeDoCopy", "nativeDoCopy", true, false, R"({"text":"copy me"})", "doCopy(copy me)", ""},
    {"nativeAlert", "NativeAlertByJsHandler", true, true, R"({"msg":"Careful"})", "alert(Careful)", "alert()"},
    {"nativeChangeMaxMin", "MainVCNativeChangeMaxMinByJsHandler", true, true, "{}", "changeMaxMin", "changeMaxMin"},
    {"nativeToAddMp3", "MainVCNativeToAddMp3ByJsHandler", true, true, "{}", "toAddMp3", "toAddMp3"},
    {"nativeClearPlayList", " Clear Play List By Js ", true, true, "{}", "clearPlayList", "clearPlayList"},
    {"nativeSetCharset", "Set Charset By JS ", true, false, R"({"mainPathFileName":"file:///M/a","charset":"big5"})",
     "setCharset(file:///M/a,big5)", "setCharset(,)"},
    {"nativeMoveItem", "Move Item By JS ", true, false, R"({"fromIndex":"0","toIndex":"2"})", "moveItem(1,3)", nullptr},
    {"nativeRemove", "Native Remove By JS ", true, false, R"({"filePath":"a","x":"y"})", "remove(a)", "remove()"},
    {"nativePlay", "Native Play By JS ", true, false, "{}", "play", "play"},
    {"nativePlayItem", "Native Play Item By JS ", true, false, R"({"filePath":"b"})", "playItem(b)", "playItem()"},
    {"nativePause", "Native Pause By JS ", true, false, "{}", "pause", "pause"},
    {"nativePauseItem", "Native Pause By JS ", true, false, "{}", "pause", "pause"},
    {"nativeChangeMode", "ChangeModeByJsHandler", true, true, "{}", "changeMode", "changeMode"},
    {"nativePlayNext", "PlayNextByJsHandler", true, false, "{}", "playNext", "playNext"},
    {"nativePlayPrev", "PlayPrevByJsHandler", true, false, "{}", "playPrev", "playPrev"},
    {"nativeSetCurrentPercent", "SetCurrentTimeByJsHandler ", true, false, R"({"currentPercent":"2500.5"})",
     "setCurrentPercent(2500.5)", "setCurrentPercent(0)"},
    {"nativeTurnLyricsOn", "TurnLyricsOnByJsHandler ", true, false, R"({"needOn":"true","rowAmoutString":"towRows"})",
     "turnLyricsOn(true,towRows)", "turnLyricsOn(false,oneRow)"},
    {"nativeTurnOneRowOrTow", "TurnLyricsOnByJsHandler ", true, false, R"({"rowAmoutString":"towRows"})",
     "setRowMode(towRows)", "setRowMode(oneRow)"},
    {"nativePlayNextLyric", "PlayNextLyricByJsHandler", true, false, "{}", "playNextLyric", "playNextLyric"},
    {"nativePlayPrevLyric", "PlayPrevLyricByJsHandler", true, false, "{}", "playPrevLyric", "playPrevLyric"},
    {"nativeSpeedUp", "Speed Up By JS ", true, false, "{}", "speedUp", "speedUp"},
    {"nativeSpeedDown", "Speed Down By JS ", true, false, "{}", "speedDown", "speedDown"},
};

struct HandlerTableTest : ::testing::Test {
    Lines calls;
    test::FakeMainQueue queue;
    test::FakePageView page;
    HandlerTableTest() { registerHandlers(page, queue, recording(calls)); }

    // Posts a message; gives its console lines, its inline calls, "|", then its queued calls.
    Lines post(const std::string& message, const std::string& body) {
        calls.clear();
        ::testing::internal::CaptureStdout();
        EXPECT_TRUE(page.post(message, body)) << message;
        calls.push_back("|");
        queue.drain();
        std::istringstream console(::testing::internal::GetCapturedStdout());
        Lines out;
        for (std::string line; std::getline(console, line);) out.push_back(line);
        out.insert(out.end(), calls.begin(), calls.end());
        return out;
    }
    static Lines expected(const Row& row, const std::string& body, const std::string& call) {
        const std::string line = row.console ? row.console + (row.withBody ? body : "") : "";
        Lines out{line, row.queued ? "|" : call, row.queued ? call : "|"};
        std::erase(out, "");
        return out;
    }
};

TEST_F(HandlerTableTest, EachMessageWritesItsLineThenCallsItsOperationWithItsDefaultsOrDropsOtherShapes) {
    EXPECT_EQ(page.handlers.size(), std::size(kRows));
    for (const Row& row : kRows) {
        EXPECT_EQ(post(row.message, row.body), expected(row, row.body, row.call)) << row.message;
        if (row.onEmpty) { EXPECT_EQ(post(row.message, "{}"), expected(row, "{}", row.onEmpty)) << row.message; }
        const bool readsBody = std::string(row.body).starts_with("{\"");
        for (const char* other : {"null", "42", R"(["a"])", R"({"filePath":2,"fromIndex":2,"text":{}})", "{not json"}) {
            EXPECT_EQ(post(row.message, other), expected(row, other, readsBody ? "" : row.call)) << row.message;
        }
    }
}

TEST_F(HandlerTableTest, MovePositionsAndSeekTakeWholeNumbersOnlyAndLogARefusal) {
    const std::pair<std::string, std::string> cases[] = {
        {R"({"fromIndex":"32766","toIndex":"007"})", "moveItem(32767,8)"}, {R"({"fromIndex":"1"})", ""},
        {R"({"fromIndex":"32767","toIndex":"0"})", ""}, {R"({"fromIndex":"-1","toIndex":"0"})", ""},
        {R"({"fromIndex":" 1","toIndex":"0"})", ""}, {R"({"fromIndex":"1x","toIndex":"0"})", ""},
        {R"({"currentPercent":"1e3"})", "setCurrentPercent(1000)"}, {R"({"currentPercent":"12abc"})", ""},
        {R"({"currentPercent":"nan"})", ""}, {R"({"currentPercent":"1e999"})", ""}, {R"({"currentPercent":""})", ""},
        {R"({"currentPercent":"+5"})", ""}, {R"({"currentPercent":"0x10"})", ""},
        {R"({"currentPercent":"-0.5"})", "setCurrentPercent(-0.5)"}};
    for (const auto& [body, call] : cases) {
        const auto out = post(body.find("Index") == body.npos ? "nativeSetCurrentPercent" : "nativeMoveItem", body);
        ASSERT_EQ(out.size(), 3u) << body << ": the line and the call, or the line and the refusal";
        EXPECT_EQ(out[1].find(" ignored: ") != std::string::npos ? "" : out[1], call) << body;
    }
}

// Registering the table again on the same page (as a second main view would) must not take the messages
// away from the handlers the page already has.
TEST_F(HandlerTableTest, ASecondRegistrationOfANameIsRefusedAndTheFirstHandlerKeepsIt) {
    Lines later;
    ::testing::internal::CaptureStdout();
    registerHandlers(page, queue, recording(later));
    std::istringstream console(::testing::internal::GetCapturedStdout());
    std::size_t refusals = 0;
    for (std::string line; std::getline(console, line);) {
        EXPECT_EQ(line.rfind("Message handler refused: ", 0), 0u) << line;
        refusals += line.find(" is already bound") != std::string::npos;
    }
    EXPECT_EQ(refusals, std::size(kRows));
    EXPECT_EQ(post("nativePlay", "{}"), (Lines{"Native Play By JS {}", "play", "|"}));
    EXPECT_TRUE(later.empty());
}

}  // namespace
}  // namespace tunelark
