#include "tools/lrc/LrcToolReport.h"

#include "platform/JsonText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

namespace tunelark {
namespace {

using Json = nlohmann::ordered_json;  // keeps the keys in the documented order

// Whole seconds print as integers (10, not 10.0); non-finite times become null.
Json jsonNumber(double value) {
    constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < kExactIntegers) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

Json jsonIndex(std::optional<std::size_t> index) {
    return index ? Json(*index) : Json(nullptr);
}

std::string indexText(std::optional<std::size_t> index) {
    return index ? std::to_string(*index) : "none";
}

// Decoded text is valid UTF-8; the writer's replacing guards the output if that ever changes.
std::string dumped(const Json& json) { return compactJson(json) + "\n"; }

}  // namespace

std::string formatSeconds(double seconds) {
    std::array<char, 64> buffer{};
    const auto [end, ec] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), seconds);
    return ec == std::errc{} ? std::string(buffer.data(), end) : std::string("?");
}

std::string checkReportText(const ChosenCharset& chosen, const LrcTimeline& timeline, std::span<const double> positions) {
    std::string out = "charset: " + std::string(charsetName(chosen.charset)) + "\n";
    out += "shown: " + chosen.shownName + "\n";
    out += "entries: " + std::to_string(timeline.size()) + "\n";
    for (std::size_t i = 0; i < timeline.size(); ++i) {
        out += std::to_string(i) + "\t" + formatSeconds(timeline.timeLineArray[i]) + "\t" + timeline.lineText(i) + "\n";
    }
    for (const double at : positions) {
        out += "at " + formatSeconds(at) + ": current " + indexText(timeline.currentLine(at)) + ", later " +
               indexText(timeline.laterLine(at)) + "\n";
    }
    return out;
}

std::string checkReportJson(const ChosenCharset& chosen, const LrcTimeline& timeline, std::span<const double> positions) {
    Json entries = Json::array();
    for (std::size_t i = 0; i < timeline.size(); ++i) {
        entries.push_back(Json::array({jsonNumber(timeline.timeLineArray[i]), timeline.lineText(i)}));
    }
    Json lines = Json::array();
    for (const double at : positions) {
        Json line = Json::object();
        line["at"] = jsonNumber(at);
        line["current"] = jsonIndex(timeline.currentLine(at));
        line["later"] = jsonIndex(timeline.laterLine(at));
        lines.push_back(std::move(line));
    }
    Json report = Json::object();
    report["charset"] = charsetName(chosen.charset);
    report["shown"] = chosen.shownName;
    report["entries"] = std::move(entries);
    report["positions"] = std::move(lines);
    return dumped(report);
}

std::string namesReport(const std::vector<std::string>& names, bool json) {
    if (json) return dumped(Json(names));
    std::string out;
    for (const std::string& name : names) out += name + "\n";
    return out;
}

}  // namespace tunelark
