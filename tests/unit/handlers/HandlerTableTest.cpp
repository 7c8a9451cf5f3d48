#include "bridge/handlers/HandlerTable.h"

#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <typeindex>
#include <vector>

namespace tunelark {
namespace {

using test::FakeMainQueue;
using test::FakePageView;

// Seams that record each call as text, such as "moveItem(1,3)".
struct RecordingOperations {
    std::vector<std::string> calls;

    BridgeOperations operations() {
        BridgeOperations o;
        const auto plain = [this](const char* name) { return [this, name] { calls.emplace_back(name); }; };
        const auto text = [this](const char* name) {
            return [this, name](const std::string& value) { calls.push_back(std::string(name) + "(" + value + ")"); };
        };
        const auto two = [this](const char* name) {
            return [this, name](const std::string& a, const std::string& b) {
                calls.push_back(std::string(name) + "(" + a + "," + b + ")");
            };
        };
        o.showWindow = plain("showWindow");
        o.startMoveWindow = plain("startMoveWindow");
        o.doCopy = text("doCopy");
        o.alert = text("alert");
        o.changeMaxMin = plain("changeMaxMin");
        o.toAddMp3 = plain("toAddMp3");
        o.clearPlayList = plain("clearPlayList");
        o.setCharset = two("setCharset");
        o.moveItem = [this](int from, int to) {
            calls.push_back("moveItem(" + std::to_string(from) + "," + std::to_string(to) + ")");
        };
        o.remove = text("remove");
        o.play = plain("play");
        o.playItem = text("playItem");
        o.pause = plain("pause");
        o.changeMode = plain("changeMode");
        o.playNext = plain("playNext");
        o.playPrev = plain("playPrev");
        o.setCurrentPercent = [this](double value) {
            std::ostringstream out;
            out << "setCurrentPercent(" << value << ")";
            calls.push_back(out.str());
        };
        o.turnLyricsOn = two("turnLyricsOn");
        o.turnOneRowOrTow = text("turnOneRowOrTow");
        o.playNextLyric = plain("playNextLyric");
        o.playPrevLyric = plain("playPrevLyric");
        o.speedUp = plain("speedUp");
        o.speedDown = plain("speedDown");
        return o;
    }
};

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

struct Row {
    std::string message;
    std::type_index handlerClass;
    std::optional<std::string> prefix;  // nothing: no console line
    bool showsBody;
    bool queued;
    bool readsStringMap;
    std::string body;                                // a well-formed body
    std::vector<std::string> calls;                  // what that body causes
    std::vector<std::string> callsForEmptyObject;    // the defaults at work
};

using T = std::type_index;

const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        {"showWindow", T(typeid(ShowWindowByJsHandler)), "showWindow", false, true, false, "null", {"showWindow"}, {"showWindow"}},
        {"startMoveWindow", T(typeid(StartMoveWindowByJsHandler)), "startMoveWindow", true, true, false, "null", {"startMoveWindow"}, {"startMoveWindow"}},
        {"stopMoveWindow", T(typeid(StopMoveWindowByJsHandler)), "stopWindow", true, false, false, "null", {}, {}},
        {"nativeLog", T(typeid(LogByJsHandler)), std::nullopt, false, false, false, R"({"msg":"hello"})", {}, {}},
        {"nativeDoCopy", T(typeid(DoCopyByJsHandler)), "nativeDoCopy", true, false, true, R"({"text":"copy me"})", {"doCopy(copy me)"}, {}},
        {"nativeAlert", T(typeid(AlertByJsHandler)), "NativeAlertByJsHandler", true, true, true, R"({"msg":"Careful"})", {"alert(Careful)"}, {"alert()"}},
        {"nativeChangeMaxMin", T(typeid(ChangeMaxMinByJsHandler)), "MainVCNativeChangeMaxMinByJsHandler", true, true, false, "{}", {"changeMaxMin"}, {"changeMaxMin"}},
        {"nativeToAddMp3", T(typeid(ToAddMp3ByJsHandler)), "MainVCNativeToAddMp3ByJsHandler", true, true, false, "{}", {"toAddMp3"}, {"toAddMp3"}},
        {"nativeClearPlayList", T(typeid(ClearPlayListByJsHandler)), " Clear Play List By Js ", true, true, false, "{}", {"clearPlayList"}, {"clearPlayList"}},
        {"nativeSetCharset", T(typeid(SetCharsetByJsHandler)), "Set Charset By JS ", true, false, true, R"({"mainPathFileName":"file:///M/a","charset":"GB18030"})", {"setCharset(file:///M/a,GB18030)"}, {"setCharset(,)"}},
        {"nativeMoveItem", T(typeid(MoveItemByJsHandler)), "Move Item By JS ", true, false, true, R"({"fromIndex":"0","toIndex":"2"})", {"moveItem(1,3)"}, {}},
        {"nativeRemove", T(typeid(RemoveByJsHandler)), "Native Remove By JS ", true, false, true, R"({"filePath":"file:///M/a.mp3"})", {"remove(file:///M/a.mp3)"}, {"remove()"}},
        {"nativePlay", T(typeid(PlayByJsHandler)), "Native Play By JS ", true, false, false, "{}", {"play"}, {"play"}},
        {"nativePlayItem", T(typeid(PlayItemByJsHandler)), "Native Play Item By JS ", true, false, true, R"({"filePath":"file:///M/b.mp3"})", {"playItem(file:///M/b.mp3)"}, {"playItem()"}},
        {"nativePause", T(typeid(PauseByJsHandler)), "Native Pause By JS ", true, false, false, "{}", {"pause"}, {"pause"}},
        {"nativePauseItem", T(typeid(PauseByJsHandler)), "Native Pause By JS ", true, false, false, "{}", {"pause"}, {"pause"}},
        {"nativeChangeMode", T(typeid(ChangeModeByJsHandler)), "ChangeModeByJsHandler", true, true, false, "{}", {"changeMode"}, {"changeMode"}},
        {"nativePlayNext", T(typeid(PlayNextByJsHandler)), "PlayNextByJsHandler", true, false, false, "{}", {"playNext"}, {"playNext"}},
        {"nativePlayPrev", T(typeid(PlayPrevByJsHandler)), "PlayPrevByJsHandler", true, false, false, "{}", {"playPrev"}, {"playPrev"}},
        {"nativeSetCurrentPercent", T(typeid(SetCurrentTimeByJsHandler)), "SetCurrentTimeByJsHandler ", true, false, true, R"({"currentPercent":"2500.5"})", {"setCurrentPercent(2500.5)"}, {"setCurrentPercent(0)"}},
        {"nativeTurnLyricsOn", T(typeid(TurnLyricsOnByJsHandler)), "TurnLyricsOnByJsHandler ", true, false, true, R"({"needOn":"true","rowAmoutString":"towRows"})", {"turnLyricsOn(true,towRows)"}, {"turnLyricsOn(false,oneRow)"}},
        {"nativeTurnOneRowOrTow", T(typeid(TurnOneRowOrTowByJsHandler)), "TurnLyricsOnByJsHandler ", true, false, true, R"({"rowAmoutString":"towRows"})", {"turnOneRowOrTow(towRows)"}, {"turnOneRowOrTow(oneRow)"}},
        {"nativePlayNextLyric", T(typeid(PlayNextLyricByJsHandler)), "PlayNextLyricByJsHandler", true, false, false, "{}", {"playNextLyric"}, {"playNextLyric"}},
        {"nativePlayPrevLyric", T(typeid(PlayPrevLyricByJsHandler)), "PlayPrevLyricByJsHandler", true, false, false, "{}", {"playPrevLyric"}, {"playPrevLyric"}},
        {"nativeSpeedUp", T(typeid(SpeedUpByJsHandler)), "Speed Up By JS ", true, false, false, "{}", {"speedUp"}, {"speedUp"}},
        {"nativeSpeedDown", T(typeid(SpeedDownByJsHandler)), "Speed Down By JS ", true, false, false, "{}", {"speedDown"}, {"speedDown"}},
    };
    return table;
}

// Bodies that are not string maps, as the page's values reach native code.
const std::vector<std::string> kOtherShapes = {
    "null", "42", "true", R"("text")", "[]", R"(["a","b"])",
    R"({"filePath":2})", R"({"fromIndex":2,"toIndex":3})", R"({"msg":null})", R"({"text":{"a":"b"}})",
    R"({"needOn":true})", R"({"text":["x"]})", "{not json", "",
};

class HandlerTableTest : public ::testing::Test {
protected:
    HandlerTableTest() : handlers(registerHandlers(page, queue, recorder.operations())) {}

    // Posts a message; returns the console lines it wrote, and the calls made inline and after draining.
    struct Outcome {
        std::vector<std::string> console;
        std::vector<std::string> inlineCalls;
        std::vector<std::string> queuedCalls;
    };
    Outcome post(const std::string& message, const std::string& body) {
        recorder.calls.clear();
        ::testing::internal::CaptureStdout();
        EXPECT_TRUE(page.post(message, body)) << message;
        Outcome outcome;
        outcome.inlineCalls = recorder.calls;
        recorder.calls.clear();
        queue.drain();
        outcome.queuedCalls = recorder.calls;
        outcome.console = lines(::testing::internal::GetCapturedStdout());
        return outcome;
    }

    static std::vector<std::string> expectedConsole(const Row& row, const std::string& body) {
        if (!row.prefix) return {};
        return {*row.prefix + (row.showsBody ? body : "")};
    }

    RecordingOperations recorder;
    FakeMainQueue queue;
    FakePageView page;
    std::vector<std::shared_ptr<const ByJsHandler>> handlers;
};

TEST_F(HandlerTableTest, RegistersEveryMessageInTableOrderWithItsHandlerClass) {
    ASSERT_EQ(page.order.size(), rows().size());
    ASSERT_EQ(handlers.size(), rows().size());
    for (std::size_t i = 0; i < rows().size(); ++i) {
        EXPECT_EQ(page.order[i], rows()[i].message) << "row " << i + 1;
        EXPECT_EQ(std::type_index(typeid(*handlers[i])), rows()[i].handlerClass) << rows()[i].message;
    }
    // The two pause messages have objects of their own.
    EXPECT_NE(handlers[14], handlers[15]);
    EXPECT_FALSE(page.post("nativeUnknown", "{}"));
}

TEST_F(HandlerTableTest, EachMessageWritesItsLineThenRunsItsOperationInlineOrQueued) {
    for (const auto& row : rows()) {
        const auto outcome = post(row.message, row.body);
        EXPECT_EQ(outcome.console, expectedConsole(row, row.body)) << row.message;
        if (row.queued) {
            EXPECT_TRUE(outcome.inlineCalls.empty()) << row.message << " must not run within the handler";
            EXPECT_EQ(outcome.queuedCalls, row.calls) << row.message;
        } else {
            EXPECT_EQ(outcome.inlineCalls, row.calls) << row.message;
            EXPECT_TRUE(outcome.queuedCalls.empty()) << row.message;
        }
    }
}

TEST_F(HandlerTableTest, MissingKeysTakeTheirDefaults) {
    for (const auto& row : rows()) {
        if (row.message == "nativeMoveItem") continue;  // no defaults: covered below
        const auto outcome = post(row.message, "{}");
        auto all = outcome.inlineCalls;
        all.insert(all.end(), outcome.queuedCalls.begin(), outcome.queuedCalls.end());
        EXPECT_EQ(all, row.callsForEmptyObject) << row.message;
        EXPECT_EQ(outcome.console, expectedConsole(row, "{}")) << row.message;
    }
}

TEST_F(HandlerTableTest, BodiesOfAnotherShapeAreDroppedAfterTheConsoleLine) {
    for (const auto& row : rows()) {
        for (const auto& body : kOtherShapes) {
            const auto outcome = post(row.message, body);
            EXPECT_EQ(outcome.console, expectedConsole(row, body)) << row.message << " " << body;
            auto all = outcome.inlineCalls;
            all.insert(all.end(), outcome.queuedCalls.begin(), outcome.queuedCalls.end());
            // A row that ignores its body runs whatever the body is.
            const auto expected = row.readsStringMap ? std::vector<std::string>{} : row.calls;
            EXPECT_EQ(all, expected) << row.message << " " << body;
        }
    }
}

TEST_F(HandlerTableTest, KeysOutsideTheRowAreNotRead) {
    const auto outcome = post("nativeRemove", R"({"filePath":"file:///a.mp3","extra":"x"})");
    EXPECT_EQ(outcome.inlineCalls, (std::vector<std::string>{"remove(file:///a.mp3)"}));
    // Values that are not strings refuse the body even under keys the row does not use.
    EXPECT_TRUE(post("nativeRemove", R"({"filePath":"file:///a.mp3","extra":1})").inlineCalls.empty());
}

struct Conversion {
    std::string body;
    std::optional<std::string> call;  // nothing: ignored with a second console line
};

TEST_F(HandlerTableTest, MovePositionsArePageIndexesPlusOneWithinThe16BitRange) {
    const std::vector<Conversion> cases = {
        {R"({"fromIndex":"0","toIndex":"2"})", "moveItem(1,3)"},
        {R"({"fromIndex":"3","toIndex":"0"})", "moveItem(4,1)"},
        {R"({"fromIndex":"1","toIndex":"1"})", "moveItem(2,2)"},
        {R"({"fromIndex":"32766","toIndex":"0"})", "moveItem(32767,1)"},
        {R"({"fromIndex":"007","toIndex":"0"})", "moveItem(8,1)"},
        {R"({"fromIndex":"32767","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"-1","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"1.0","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":" 1","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"+1","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"1x","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"99999999999999999999","toIndex":"0"})", std::nullopt},
        {R"({"fromIndex":"1"})", std::nullopt},
        {R"({"toIndex":"1"})", std::nullopt},
        {"{}", std::nullopt},
    };
    for (const auto& c : cases) {
        const auto outcome = post("nativeMoveItem", c.body);
        ASSERT_FALSE(outcome.console.empty());
        EXPECT_EQ(outcome.console[0], "Move Item By JS " + c.body);
        if (c.call) {
            EXPECT_EQ(outcome.inlineCalls, std::vector<std::string>{*c.call}) << c.body;
            EXPECT_EQ(outcome.console.size(), 1u) << c.body;
        } else {
            EXPECT_TRUE(outcome.inlineCalls.empty()) << c.body;
            EXPECT_EQ(outcome.console.size(), 2u) << c.body << ": the refusal is logged";
        }
    }
}

TEST_F(HandlerTableTest, SeekTakesTheWholeTextAsAFiniteDecimalNumber) {
    const std::vector<Conversion> cases = {
        {R"({"currentPercent":"5000"})", "setCurrentPercent(5000)"},
        {R"({"currentPercent":"2500.5"})", "setCurrentPercent(2500.5)"},
        {R"({"currentPercent":"1e3"})", "setCurrentPercent(1000)"},
        {R"({"currentPercent":"0"})", "setCurrentPercent(0)"},
        {R"({"currentPercent":""})", std::nullopt},
        {R"({"currentPercent":"abc"})", std::nullopt},
        {R"({"currentPercent":"12abc"})", std::nullopt},
        {R"({"currentPercent":" 5"})", std::nullopt},
        {R"({"currentPercent":"nan"})", std::nullopt},
        {R"({"currentPercent":"inf"})", std::nullopt},
        {R"({"currentPercent":"1e999"})", std::nullopt},
    };
    for (const auto& c : cases) {
        const auto outcome = post("nativeSetCurrentPercent", c.body);
        if (c.call) {
            EXPECT_EQ(outcome.inlineCalls, std::vector<std::string>{*c.call}) << c.body;
        } else {
            EXPECT_TRUE(outcome.inlineCalls.empty()) << c.body;
            EXPECT_EQ(outcome.console.size(), 2u) << c.body;
        }
    }
}

TEST_F(HandlerTableTest, AnInlineMessageRunsBeforeAQueuedOneThatCameFirst) {
    recorder.calls.clear();
    ::testing::internal::CaptureStdout();
    page.post("nativeChangeMode", "{}");
    page.post("nativePlayNext", "{}");
    queue.drain();
    (void)::testing::internal::GetCapturedStdout();
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"playNext", "changeMode"}));
}

TEST(HandlerTableSeams, EmptySeamsDoNothing) {
    FakeMainQueue queue;
    FakePageView page;
    registerHandlers(page, queue, BridgeOperations{});
    ::testing::internal::CaptureStdout();
    for (const auto& row : rows()) page.post(row.message, row.body);
    const auto console = lines(::testing::internal::GetCapturedStdout());
    EXPECT_EQ(queue.pending(), 0u) << "nothing to queue for an empty seam";
    EXPECT_EQ(console.size(), rows().size() - 1) << "every message but nativeLog still writes its line";
}

TEST(HandlerTableSeams, QueuedOperationsOutliveTheirRegistration) {
    FakeMainQueue queue;
    int shown = 0;
    {
        FakePageView page;
        BridgeOperations operations;
        operations.showWindow = [&shown] { ++shown; };
        registerHandlers(page, queue, operations);
        ::testing::internal::CaptureStdout();
        page.post("showWindow", "null");
        (void)::testing::internal::GetCapturedStdout();
    }
    queue.drain();
    EXPECT_EQ(shown, 1);
}

}  // namespace
}  // namespace tunelark
