#include "bridge/PageCalls.h"

#include "bridge/JsCallReader.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using test::JsCallReader;

bool isValidUtf8(const std::string& text) {
    try {
        (void)nlohmann::json(text).dump();
        return true;
    } catch (const nlohmann::json::exception&) {
        return false;
    }
}

struct ExactScript {
    const char* name;
    std::string script;
    std::string expected;
};

TEST(PageCalls, ScriptsHaveTheirExactForms) {
    const std::vector<ExactScript> cases = {
        {"playing", setIsPlayingScript(true), "setIsPlaying(true);"},
        {"paused", setIsPlayingScript(false), "setIsPlaying(false);"},
        {"mode", setModeScript("cycle"), "setMode(\"cycle\");"},
        {"slider", setSliderCurrentValueScript(2500), "setSliderCurrentValue(2500);"},
        {"negative slider", setSliderCurrentValueScript(-7), "setSliderCurrentValue(-7);"},
        {"empty play list", setPlayListScript("[]", "[]"), "setPlayList(\"[]\",\"[]\");"},
        {"charset names", setAllSupportedCharsetNamesScript(R"(["utf8","utf16"])"),
         R"(setAllSupportedCharsetNames("[\"utf8\",\"utf16\"]");)"},
        {"play list without special characters",
         setPlayListScript(R"([{"fileName":"a.mp3","no":1}])", R"([{"charset":"utf8"}])"),
         R"(setPlayList("[{\"fileName\":\"a.mp3\",\"no\":1}]","[{\"charset\":\"utf8\"}]");)"},
        {"duration", setDurationScript("62:05"), "setDuration(\"62:05\");"},
        {"current unknown", setCurrentScript("-1"), "setCurrent(\"-1\");"},
        {"speed", setSpeedScript("1.50"), "setSpeed(\"1.50\");"},
        {"playing path", setPlayingFilePathScript("file:///M/a%20b.mp3"), "setPlayingFilePath(\"file:///M/a%20b.mp3\");"},
        {"no name", setMainFileNameScript(""), "setMainFileName(\"\");"},
        {"non-ASCII kept", setMainFileNameScript("歌词 café"), "setMainFileName(\"歌词 café\");"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.script, c.expected) << c.name;
}

// Every builder of a one-text call, so each hostile text goes through all of them.
const std::vector<std::pair<std::string, std::function<std::string(std::string_view)>>>& textCalls() {
    static const std::vector<std::pair<std::string, std::function<std::string(std::string_view)>>> calls = {
        {"setMode", setModeScript},
        {"setPlayingFilePath", setPlayingFilePathScript},
        {"setMainFileName", setMainFileNameScript},
        {"setDuration", setDurationScript},
        {"setCurrent", setCurrentScript},
        {"setSpeed", setSpeedScript},
        {"setAllSupportedCharsetNames", setAllSupportedCharsetNamesScript},
    };
    return calls;
}

const std::vector<std::string> kHostileTexts = {
    "say \"hi\"",
    "back\\slash\\",
    "ends with backslash \\",
    "\\\"); alert(1); (\"",
    "line\nbreak",
    "carriage\rreturn",
    "line\xE2\x80\xA8separator and paragraph\xE2\x80\xA9separator",
    "</script><script>alert(1)</script>",
    "<!-- comment",
    std::string("nul\0byte", 8),
    "tab\tbell\a delete\x7F escape\x1B",
    "'single' and `back` ${x}",
    "歌词 — café 🎵",
};

TEST(PageCalls, HostileTextsReachThePageUnchangedAndCannotBreakOut) {
    for (const auto& [function, build] : textCalls()) {
        for (const auto& text : kHostileTexts) {
            const std::string script = build(text);
            auto call = JsCallReader::read(script);
            ASSERT_TRUE(call.has_value()) << function << " broke on: " << script;
            EXPECT_EQ(call->function, function);
            ASSERT_EQ(call->arguments.size(), 1u) << script;
            EXPECT_EQ(call->arguments[0], text) << script;
            EXPECT_EQ(script.find('<'), std::string::npos) << script;
            EXPECT_TRUE(isValidUtf8(script)) << script;
        }
    }
}

struct InvalidUtf8Case {
    const char* name;
    std::string bytes;
    std::string received;  // what the page holds after reading the string
};

TEST(PageCalls, EachInvalidByteBecomesAReplacementCharacter) {
    const std::string fffd = "\xEF\xBF\xBD";
    const std::vector<InvalidUtf8Case> cases = {
        {"stray byte", "a\xFF" "b", "a" + fffd + "b"},
        {"lone continuation", "\x80x", fffd + "x"},
        {"cut sequence", "\xE2\x82" "A", fffd + fffd + "A"},
        {"cut at the end", "ok\xF0\x9F\x8E", "ok" + fffd + fffd + fffd},
        {"overlong slash", "\xC0\xAF", fffd + fffd},
        {"overlong three bytes", "\xE0\x80\xAF", fffd + fffd + fffd},
        {"surrogate", "\xED\xA0\x80", fffd + fffd + fffd},
        {"above U+10FFFF", "\xF4\x90\x80\x80", fffd + fffd + fffd + fffd},
        {"Latin-1 name", "caf\xE9.mp3", "caf" + fffd + ".mp3"},
        {"valid neighbours kept", "\xC3\xA9\xFF\xE2\x82\xAC", "\xC3\xA9" + fffd + "\xE2\x82\xAC"},
        {"quote after a bad byte", "\xC3\"", fffd + "\""},
    };
    for (const auto& c : cases) {
        const std::string script = setMainFileNameScript(c.bytes);
        EXPECT_TRUE(isValidUtf8(script)) << c.name;
        auto call = JsCallReader::read(script);
        ASSERT_TRUE(call.has_value()) << c.name << ": " << script;
        EXPECT_EQ(call->arguments.at(0), c.received) << c.name;
    }
}

TEST(PageCalls, PlayListCarriesBothJsonTextsExactly) {
    // JSON written by the encoder already holds backslash escapes for quotes and control characters.
    nlohmann::json mp3 = nlohmann::json::array();
    nlohmann::json lrc = nlohmann::json::array();
    for (const auto& text : kHostileTexts) {
        mp3.push_back({{"fileName", text}, {"no", 1}});
        lrc.push_back({{"filePath", "file:///x/" + text}});
    }
    const std::string mp3Json = mp3.dump();
    const std::string lrcJson = lrc.dump();

    const std::string script = setPlayListScript(mp3Json, lrcJson);
    auto call = JsCallReader::read(script);
    ASSERT_TRUE(call.has_value()) << script;
    EXPECT_EQ(call->function, "setPlayList");
    ASSERT_EQ(call->arguments.size(), 2u);
    EXPECT_EQ(call->arguments[0], mp3Json);
    EXPECT_EQ(call->arguments[1], lrcJson);
    EXPECT_EQ(nlohmann::json::parse(call->arguments[0]), mp3);
    EXPECT_EQ(script.find('<'), std::string::npos);
}

TEST(PageCalls, JsStringContentLeavesPlainTextAlone) {
    EXPECT_EQ(jsStringContent(""), "");
    EXPECT_EQ(jsStringContent("file:///Music/a%20b.mp3"), "file:///Music/a%20b.mp3");
    EXPECT_EQ(jsStringContent("\xF0\x9F\x8E\xB5 ü"), "\xF0\x9F\x8E\xB5 ü");
    EXPECT_EQ(jsStringContent("\"[]\""), "\\\"[]\\\"");
}

}  // namespace
}  // namespace tunelark
