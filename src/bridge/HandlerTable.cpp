#include "bridge/HandlerTable.h"

#include "platform/Console.h"
#include "platform/JsonText.h"
#include "platform/WholeNumber.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <utility>

namespace tunelark {

namespace {

// The highest play-list position (positions are 16-bit).
constexpr int kMaxPosition = 32767;

// The call of a seam with its arguments, or nothing when the seam is empty.
template <typename... Params, typename... Args>
std::function<void()> call(const std::function<void(Params...)>& seam, Args... args) {
    if (!seam) return {};
    return [seam, ... args = std::move(args)] { seam(args...); };
}

std::function<void()> nothing(const BridgeOperations&, const BodyValues&) { return {}; }

std::string rendered(const BodyValues& values) {
    return compactJson(nlohmann::json(values));
}

// A whole text as a base-10 integer: no blanks, no "+", nothing left over.
std::optional<long long> wholeInteger(std::string_view text) {
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// A whole text as a finite decimal number ("5000", "2500.5", "1e3"), without a "+" in front.
std::optional<double> wholeDecimal(std::string_view text) {
    if (text.starts_with('+')) return std::nullopt;
    return parseFiniteDecimal(text);
}

// 0-based page indexes to play-list positions; nothing when either is missing or leaves 1..32767.
std::optional<std::pair<int, int>> positions(const BodyValues& values) {
    const auto position = [&](std::string_view key) -> std::optional<int> {
        const auto found = values.find(key);
        if (found == values.end()) return std::nullopt;
        const auto index = wholeInteger(found->second);
        if (!index || *index < 0 || *index >= kMaxPosition) return std::nullopt;
        return static_cast<int>(*index) + 1;
    };
    const auto fromNo = position("fromIndex");
    const auto toNo = position("toIndex");
    if (!fromNo || !toNo) return std::nullopt;
    return std::pair{*fromNo, *toNo};
}

std::function<void()> moveItem(const BridgeOperations& o, const BodyValues& v) {
    const auto fromTo = positions(v);
    if (!fromTo) {
        consoleLine("Move Item By JS ignored: fromIndex and toIndex must be whole numbers from 0 to 32766: " +
                    rendered(v));
        return {};
    }
    return call(o.moveItem, fromTo->first, fromTo->second);
}

std::function<void()> setCurrentPercent(const BridgeOperations& o, const BodyValues& v) {
    const auto percent = wholeDecimal(v.at("currentPercent"));
    if (!percent) {
        consoleLine("SetCurrentTimeByJsHandler ignored: currentPercent is not a number: " + rendered(v));
        return {};
    }
    return call(o.setCurrentPercent, *percent);
}

std::function<void()> doCopy(const BridgeOperations& o, const BodyValues& v) {
    const auto text = v.find("text");
    if (text == v.end()) return {};  // no "text" key: the clipboard is left alone
    return call(o.doCopy, text->second);
}

BodyReader ignored() { return {}; }
BodyReader stringMap(std::vector<BodyKey> keys) { return BodyReader{true, std::move(keys)}; }
ConsoleLine line(std::string_view prefix) { return ConsoleLine{prefix, true}; }

std::vector<HandlerRow> makeTable() {
    using Ops = const BridgeOperations&;
    using Values = const BodyValues&;
    constexpr auto queued = Run::Queued;
    constexpr auto inlined = Run::Inline;
    return {
        {"showWindow", makeHandler<ShowWindowByJsHandler>, ignored(), queued, ConsoleLine{"showWindow", false},
         [](Ops o, Values) { return call(o.showWindow); }},
        {"startMoveWindow", makeHandler<StartMoveWindowByJsHandler>, ignored(), queued, line("startMoveWindow"),
         [](Ops o, Values) { return call(o.startMoveWindow); }},
        {"stopMoveWindow", makeHandler<StopMoveWindowByJsHandler>, ignored(), inlined, line("stopWindow"), nothing},
        {"nativeLog", makeHandler<LogByJsHandler>, ignored(), inlined, std::nullopt, nothing},
        {"nativeDoCopy", makeHandler<DoCopyByJsHandler>, stringMap({{"text", std::nullopt}}), inlined,
         line("nativeDoCopy"), doCopy},
        // The text is read here; the alert is shown by the queued task.
        {"nativeAlert", makeHandler<AlertByJsHandler>, stringMap({{"msg", ""}}), queued, line("NativeAlertByJsHandler"),
         [](Ops o, Values v) { return call(o.alert, v.at("msg")); }},
        {"nativeChangeMaxMin", makeHandler<ChangeMaxMinByJsHandler>, ignored(), queued,
         line("MainVCNativeChangeMaxMinByJsHandler"), [](Ops o, Values) { return call(o.changeMaxMin); }},
        {"nativeToAddMp3", makeHandler<ToAddMp3ByJsHandler>, ignored(), queued, line("MainVCNativeToAddMp3ByJsHandler"),
         [](Ops o, Values) { return call(o.toAddMp3); }},
        {"nativeClearPlayList", makeHandler<ClearPlayListByJsHandler>, ignored(), queued,
         line(" Clear Play List By Js "), [](Ops o, Values) { return call(o.clearPlayList); }},
        {"nativeSetCharset", makeHandler<SetCharsetByJsHandler>, stringMap({{"mainPathFileName", ""}, {"charset", ""}}),
         inlined, line("Set Charset By JS "),
         [](Ops o, Values v) { return call(o.setCharset, v.at("mainPathFileName"), v.at("charset")); }},
        {"nativeMoveItem", makeHandler<MoveItemByJsHandler>,
         stringMap({{"fromIndex", std::nullopt}, {"toIndex", std::nullopt}}), inlined, line("Move Item By JS "),
         moveItem},
        {"nativeRemove", makeHandler<RemoveByJsHandler>, stringMap({{"filePath", ""}}), inlined,
         line("Native Remove By JS "), [](Ops o, Values v) { return call(o.remove, v.at("filePath")); }},
        {"nativePlay", makeHandler<PlayByJsHandler>, ignored(), inlined, line("Native Play By JS "),
         [](Ops o, Values) { return call(o.play); }},
        {"nativePlayItem", makeHandler<PlayItemByJsHandler>, stringMap({{"filePath", ""}}), inlined,
         line("Native Play Item By JS "), [](Ops o, Values v) { return call(o.playItem, v.at("filePath")); }},
        {"nativePause", makeHandler<PauseByJsHandler>, ignored(), inlined, line("Native Pause By JS "),
         [](Ops o, Values) { return call(o.pause); }},
        {"nativePauseItem", makeHandler<PauseByJsHandler>, ignored(), inlined, line("Native Pause By JS "),
         [](Ops o, Values) { return call(o.pause); }},
        {"nativeChangeMode", makeHandler<ChangeModeByJsHandler>, ignored(), queued, line("ChangeModeByJsHandler"),
         [](Ops o, Values) { return call(o.changeMode); }},
        {"nativePlayNext", makeHandler<PlayNextByJsHandler>, ignored(), inlined, line("PlayNextByJsHandler"),
         [](Ops o, Values) { return call(o.playNext); }},
        {"nativePlayPrev", makeHandler<PlayPrevByJsHandler>, ignored(), inlined, line("PlayPrevByJsHandler"),
         [](Ops o, Values) { return call(o.playPrev); }},
        {"nativeSetCurrentPercent", makeHandler<SetCurrentTimeByJsHandler>, stringMap({{"currentPercent", "0"}}),
         inlined, line("SetCurrentTimeByJsHandler "), setCurrentPercent},
        {"nativeTurnLyricsOn", makeHandler<TurnLyricsOnByJsHandler>,
         stringMap({{"needOn", "false"}, {"rowAmoutString", "oneRow"}}), inlined, line("TurnLyricsOnByJsHandler "),
         [](Ops o, Values v) { return call(o.turnLyricsOn, v.at("needOn"), v.at("rowAmoutString")); }},
        // Writes the same prefix as the message above.
        {"nativeTurnOneRowOrTow", makeHandler<TurnOneRowOrTowByJsHandler>, stringMap({{"rowAmoutString", "oneRow"}}),
         inlined, line("TurnLyricsOnByJsHandler "),
         [](Ops o, Values v) { return call(o.setRowMode, v.at("rowAmoutString")); }},
        {"nativePlayNextLyric", makeHandler<PlayNextLyricByJsHandler>, ignored(), inlined,
         line("PlayNextLyricByJsHandler"), [](Ops o, Values) { return call(o.playNextLyric); }},
        {"nativePlayPrevLyric", makeHandler<PlayPrevLyricByJsHandler>, ignored(), inlined,
         line("PlayPrevLyricByJsHandler"), [](Ops o, Values) { return call(o.playPrevLyric); }},
        {"nativeSpeedUp", makeHandler<SpeedUpByJsHandler>, ignored(), inlined, line("Speed Up By JS "),
         [](Ops o, Values) { return call(o.speedUp); }},
        {"nativeSpeedDown", makeHandler<SpeedDownByJsHandler>, ignored(), inlined, line("Speed Down By JS "),
         [](Ops o, Values) { return call(o.speedDown); }},
    };
}

}  // namespace

const std::vector<HandlerRow>& handlerTable() {
    static const std::vector<HandlerRow> table = makeTable();
    return table;
}

std::vector<std::shared_ptr<const ByJsHandler>> registerHandlers(PageView& page, MainQueue& queue,
                                                                 const BridgeOperations& operations) {
    const auto shared = std::make_shared<const BridgeOperations>(operations);
    std::vector<std::shared_ptr<const ByJsHandler>> handlers;
    for (const auto& row : handlerTable()) {
        std::shared_ptr<const ByJsHandler> handler = row.create(row, queue, shared);
        page.bindMessage(std::string(row.messageName),
                         [handler](const std::string& bodyJson) { handler->received(bodyJson); });
        handlers.push_back(std::move(handler));
    }
    return handlers;
}

}  // namespace tunelark
