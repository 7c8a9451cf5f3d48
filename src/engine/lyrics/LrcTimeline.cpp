#include "engine/lyrics/LrcTimeline.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

namespace tunelark {
namespace {

// A line switches this much before its stated time.
constexpr double kLead = 0.02;

bool isCSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t skipSpace(std::string_view text, std::size_t at) {
    while (at < text.size() && isCSpace(text[at])) ++at;
    return at;
}

std::size_t skipDigits(std::string_view text, std::size_t at) {
    while (at < text.size() && isDigit(text[at])) ++at;
    return at;
}

// Reads a leading decimal integer as strtol does in the C locale: white space, an optional sign, at least
// one digit; the rest is ignored. Saturates instead of overflowing.
std::optional<std::int64_t> readInteger(std::string_view text) {
    std::size_t at = skipSpace(text, 0);
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    if (at >= text.size() || !isDigit(text[at])) return std::nullopt;

    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;  // accumulated negatively so that the smallest value fits
    for (; at < text.size() && isDigit(text[at]); ++at) {
        const int digit = text[at] - '0';
        if (value < (kMin + digit) / 10) return negative ? kMin : kMax;
        value = value * 10 - digit;
    }
    if (negative) return value;
    return value == kMin ? kMax : -value;
}

// A decimal number beyond a double's range: infinite when its leading digit stands at or left of the
// units place, else (underflow) zero.
double outOfRangeValue(std::string_view mantissa, std::int64_t exponent) {
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = mantissa.find_first_not_of("0.");
    if (first == std::string_view::npos) return 0.0;
    const auto lead = first < point ? static_cast<std::int64_t>(point - first - 1)
                                    : -static_cast<std::int64_t>(first - point);
    return exponent >= -lead ? std::numeric_limits<double>::infinity() : 0.0;
}

// Reads a leading decimal floating-point number as strtod does in the C locale (white space, sign,
// digits with an optional point and fraction, an optional exponent); the rest is ignored. No hexadecimal,
// infinity or NaN forms: an LRC time never uses them.
std::optional<double> readDecimal(std::string_view text) {
    std::size_t at = skipSpace(text, 0);
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    const std::size_t start = at;
    at = skipDigits(text, at);
    std::size_t digits = at - start;
    if (at < text.size() && text[at] == '.') {
        const std::size_t fraction = at + 1;
        at = skipDigits(text, fraction);
        digits += at - fraction;
    }
    if (digits == 0) return std::nullopt;
    const std::size_t mantissaEnd = at;
    std::int64_t exponent = 0;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        std::size_t e = at + 1;
        if (e < text.size() && (text[e] == '-' || text[e] == '+')) ++e;
        if (e < text.size() && isDigit(text[e])) {
            exponent = readInteger(text.substr(at + 1)).value_or(0);
            at = skipDigits(text, e);
        }
    }

    double value = 0.0;
    const std::from_chars_result result =
        std::from_chars(text.data() + start, text.data() + at, value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        value = outOfRangeValue(text.substr(start, mantissaEnd - start), exponent);
    } else if (result.ec != std::errc{}) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

}  // namespace

void LrcTimeline::clear() {
    lrcString.reset();
    timeLineArray.clear();
    wordLineArray.clear();
}

void LrcTimeline::parse(std::string_view text) {
    std::string scratch;  // reused for lines that hold carriage returns
    std::size_t start = 0;
    for (;;) {
        const std::size_t feed = text.find('\n', start);
        const std::size_t end = feed == std::string_view::npos ? text.size() : feed;
        parseLine(text.substr(start, end - start), scratch);
        if (feed == std::string_view::npos) break;
        start = feed + 1;
    }
}

void LrcTimeline::parseLine(std::string_view line, std::string& scratch) {
    if (line.empty()) return;  // before removing carriage returns: a lone "\r" line still counts
    if (line.find('\r') != std::string_view::npos) {
        scratch.clear();
        for (const char c : line) {
            if (c != '\r') scratch.push_back(c);
        }
        line = scratch;
    }
    // "[", "]" and ":" are ASCII and never occur inside a UTF-8 multi-byte sequence, so bytes will do.
    const std::size_t open = line.find('[');
    const std::size_t close = line.find(']');
    if (open == std::string_view::npos || close == std::string_view::npos) {
        append(0.0, line);
        return;
    }
    if (close < open) return;  // "a]b[c": no tag can be read
    const std::string_view tag = line.substr(open + 1, close - open - 1);
    const std::size_t colon = tag.find(':');
    if (tag.empty() || colon == std::string_view::npos) return;
    const std::optional<std::int64_t> minutes = readInteger(tag.substr(0, colon));
    const std::optional<double> seconds = readDecimal(tag.substr(colon + 1));
    if (!minutes || !seconds) return;
    append(static_cast<double>(*minutes) * 60.0 + *seconds, line.substr(close + 1));
}

void LrcTimeline::append(double time, std::string_view text) {
    timeLineArray.push_back(time);
    wordLineArray.emplace_back(text);
}

std::optional<std::size_t> LrcTimeline::laterLine(double position) const {
    for (std::size_t i = 0; i < timeLineArray.size(); ++i) {
        if (position < timeLineArray[i] - kLead) return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> LrcTimeline::currentLine(double position) const {
    if (timeLineArray.empty()) return std::nullopt;
    const std::optional<std::size_t> later = laterLine(position);
    if (!later) return timeLineArray.size() - 1;
    return *later == 0 ? 0 : *later - 1;
}

}  // namespace tunelark
