// A page message body (any text) sent to each of the 26 handlers: the body reader, the defaults and the
// number conversions decide which operation runs with which values. Checked against a reading of the
// body made here with the C library's number parsers, not the handlers' own.
#include "FuzzChecks.h"
#include "bridge/handlers/HandlerTable.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <locale.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using Call = std::vector<std::string>;  // operation name, then its arguments as text

std::string exact(double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%a", value);
    return buffer;
}

// Every seam records its call.
BridgeOperations recordingOperations(std::vector<Call>& calls) {
    BridgeOperations o;
    auto none = [&calls](const char* name) { return [&calls, name] { calls.push_back({name}); }; };
    auto text = [&calls](const char* name) {
        return [&calls, name](const std::string& a) { calls.push_back({name, a}); };
    };
    auto texts = [&calls](const char* name) {
        return [&calls, name](const std::string& a, const std::string& b) { calls.push_back({name, a, b}); };
    };
    o.showWindow = none("showWindow");
    o.startMoveWindow = none("startMoveWindow");
    o.doCopy = text("doCopy");
    o.alert = text("alert");
    o.changeMaxMin = none("changeMaxMin");
    o.toAddMp3 = none("toAddMp3");
    o.clearPlayList = none("clearPlayList");
    o.setCharset = texts("setCharset");
    o.moveItem = [&calls](int from, int to) { calls.push_back({"moveItem", std::to_string(from), std::to_string(to)}); };
    o.remove = text("remove");
    o.play = none("play");
    o.playItem = text("playItem");
    o.pause = none("pause");
    o.changeMode = none("changeMode");
    o.playNext = none("playNext");
    o.playPrev = none("playPrev");
    o.setCurrentPercent = [&calls](double p) { calls.push_back({"setCurrentPercent", exact(p)}); };
    o.turnLyricsOn = texts("turnLyricsOn");
    o.turnOneRowOrTow = text("turnOneRowOrTow");
    o.playNextLyric = none("playNextLyric");
    o.playPrevLyric = none("playPrevLyric");
    o.speedUp = none("speedUp");
    o.speedDown = none("speedDown");
    return o;
}

using StringMap = std::map<std::string, std::string>;

// The body as a string map: a JSON object whose values are all strings.
std::optional<StringMap> stringMap(const std::string& body) {
    const auto json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    StringMap map;
    for (const auto& [key, value] : json.items()) {
        if (!value.is_string()) return std::nullopt;
        map[key] = value.get<std::string>();
    }
    return map;
}

std::string valueOr(const StringMap& map, const std::string& key, const std::string& absent) {
    auto found = map.find(key);
    return found == map.end() ? absent : found->second;
}

// A page index: decimal digits (a minus only before zero), 0 to 32766; the play-list position is one more.
std::optional<int> position(const StringMap& map, const std::string& key) {
    auto found = map.find(key);
    if (found == map.end()) return std::nullopt;
    const std::string& text = found->second;
    const std::size_t digits = text.starts_with('-') ? 1 : 0;
    if (text.size() == digits || text.find_first_not_of("0123456789", digits) != std::string::npos) return std::nullopt;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (errno == ERANGE || value < 0 || value > 32766) return std::nullopt;
    return static_cast<int>(value) + 1;
}

// What a percent text may give: nothing, exactly one value, or (out of the double's range) either.
struct PercentReading {
    std::optional<double> value;
    bool eitherWay = false;
};

PercentReading percent(const std::string& text) {
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    // A plain decimal number: no blank or plus in front, no hexadecimal, infinity or NaN forms.
    if (text.empty() || std::string_view(" \t\n\v\f\r+").find(text.front()) != std::string_view::npos ||
        text.find_first_of("xXiInN") != std::string::npos) {
        return {};
    }
    errno = 0;
    char* end = nullptr;
    const double value = strtod_l(text.c_str(), &end, c);
    if (end != text.c_str() + text.size() || text.find('\0') != std::string::npos) return {};
    if (errno == ERANGE) return {std::nullopt, true};
    return {value, false};
}

// The calls a row should make for this body, in order.
std::vector<Call> expectedCalls(std::string_view message, const std::string& body) {
    static const std::map<std::string_view, std::string> bodyless{
        {"showWindow", "showWindow"}, {"startMoveWindow", "startMoveWindow"}, {"nativeChangeMaxMin", "changeMaxMin"},
        {"nativeToAddMp3", "toAddMp3"}, {"nativeClearPlayList", "clearPlayList"}, {"nativePlay", "play"},
        {"nativePause", "pause"}, {"nativePauseItem", "pause"}, {"nativeChangeMode", "changeMode"},
        {"nativePlayNext", "playNext"}, {"nativePlayPrev", "playPrev"}, {"nativePlayNextLyric", "playNextLyric"},
        {"nativePlayPrevLyric", "playPrevLyric"}, {"nativeSpeedUp", "speedUp"}, {"nativeSpeedDown", "speedDown"}};
    if (auto found = bodyless.find(message); found != bodyless.end()) return {{found->second}};
    if (message == "stopMoveWindow" || message == "nativeLog") return {};

    const std::optional<StringMap> map = stringMap(body);
    if (!map) return {};
    const StringMap& m = *map;
    if (message == "nativeDoCopy") {
        if (!m.contains("text")) return {};
        return {{"doCopy", m.at("text")}};
    }
    if (message == "nativeAlert") return {{"alert", valueOr(m, "msg", "")}};
    if (message == "nativeSetCharset") return {{"setCharset", valueOr(m, "mainPathFileName", ""), valueOr(m, "charset", "")}};
    if (message == "nativeRemove") return {{"remove", valueOr(m, "filePath", "")}};
    if (message == "nativePlayItem") return {{"playItem", valueOr(m, "filePath", "")}};
    if (message == "nativeTurnLyricsOn") {
        return {{"turnLyricsOn", valueOr(m, "needOn", "false"), valueOr(m, "rowAmoutString", "oneRow")}};
    }
    if (message == "nativeTurnOneRowOrTow") return {{"turnOneRowOrTow", valueOr(m, "rowAmoutString", "oneRow")}};
    if (message == "nativeMoveItem") {
        const auto from = position(m, "fromIndex");
        const auto to = position(m, "toIndex");
        if (!from || !to) return {};
        return {{"moveItem", std::to_string(*from), std::to_string(*to)}};
    }
    fuzz::require(false, "every message of the table is known here");
    return {};
}

void checkPercent(const std::string& body, const std::vector<Call>& calls) {
    const std::optional<StringMap> map = stringMap(body);
    if (!map) {
        fuzz::require(calls.empty(), "a body that is not a string map runs nothing");
        return;
    }
    const PercentReading reading = percent(valueOr(*map, "currentPercent", "0"));
    if (reading.eitherWay) {
        fuzz::require(calls.size() <= 1, "at most one seek");
        if (!calls.empty()) {
            fuzz::require(std::isfinite(std::strtod(calls[0][1].c_str(), nullptr)), "a seek goes to a finite value");
        }
        return;
    }
    const std::vector<Call> expected =
        reading.value ? std::vector<Call>{{"setCurrentPercent", exact(*reading.value)}} : std::vector<Call>{};
    fuzz::require(calls == expected, "nativeSetCurrentPercent seeks to the number the body holds, or not at all");
}

}  // namespace
}  // namespace tunelark

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    tunelark::fuzz::silenceConsole();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tunelark;
    static std::vector<Call> calls;
    static test::FakeMainQueue queue;
    static test::FakePageView page;
    static const auto handlers = registerHandlers(page, queue, recordingOperations(calls));
    fuzz::require(handlers.size() == handlerTable().size(), "one handler per row");

    const std::string body(reinterpret_cast<const char*>(data), size);
    for (const auto& handler : handlers) {
        calls.clear();
        handler->received(body);
        queue.drain();
        const std::string_view message = handler->row().messageName;
        if (message == "nativeSetCurrentPercent") {
            checkPercent(body, calls);
        } else {
            fuzz::require(calls == expectedCalls(message, body), "the row's operation runs with the body's values");
        }
    }
    return 0;
}
