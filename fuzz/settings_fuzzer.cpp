// The settings readers given stored records with any keys and texts: a whole decimal number reads as itself, a
// blank in front refuses it, the last readable record of each key wins, and what the writer formats reads back.
#include "FuzzChecks.h"
#include "library/store/Settings.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

using namespace tunelark;

static bool same(double a, double b) { return (std::isnan(a) && std::isnan(b)) || !std::memcmp(&a, &b, sizeof a); }
static bool close(double read, double written, double decimals) {  // as printed with that many decimals
    if (!std::isfinite(written)) return same(read, written);
    return std::abs(read - written) <= 0.5 * std::pow(10.0, -decimals) + std::abs(written) * 1e-15;
}

static void checkNumber(const std::string& text) {
    const std::optional<double> read = parseWholeNumber(text);
    fuzz::require(!read || text.empty() || !text.front() || !std::strchr(" \t\n\v\f\r", text.front()), "a blank first");
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    fuzz::require(!whole || (read && same(*read, value)), "a whole decimal number reads as itself");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto keys = std::apply([](const auto&... row) { return std::array{std::string(row.key)...}; },
                                  kLyricsSettings);
    Records<SettingsEntity> records;
    for (int i = input.ConsumeIntegralInRange(0, 8); i > 0; --i) {
        auto& record = records.emplace_back(std::make_shared<SettingsEntity>());
        const int pick = input.ConsumeIntegralInRange(0, 5);
        if (pick < 4) record->key = keys[pick];
        if (pick == 4) record->key = input.ConsumeRandomLengthString(32);
        if (input.ConsumeIntegralInRange(0, 7) != 0) record->value = input.ConsumeRandomLengthString(64);
        if (record->value) checkNumber(*record->value);
    }
    LyricsStyle expected;  // every readable record in order, so the last one of each key wins
    for (const auto& record : records) {
        const auto& [key, value] = *record;
        if (!key || !value) continue;
        if (*key == keys[0]) expected.oneRowFontSize = parseWholeNumber(*value).value_or(18);
        if (*key == keys[1]) expected.twoRowsFontSize = parseWholeNumber(*value).value_or(18);
        if (*key == keys[2]) expected.fontColor = parseStoredColor(*value).value_or(expected.fontColor);
        if (*key == keys[3]) expected.keepBackgroundColor = parseStoredBool(*value);
    }
    records.push_back(nullptr);  // a hole in a fetched list is skipped, never read
    LyricsStyle style;
    applyStoredSettings(records, style);
    const auto [one, two, color, keep] = style;
    const Rgb& want = expected.fontColor;
    fuzz::require(same(one, expected.oneRowFontSize) && same(two, expected.twoRowsFontSize) &&
                      same(color.red, want.red) && same(color.green, want.green) && same(color.blue, want.blue) &&
                      keep == expected.keepBackgroundColor,
                  "each key takes its last readable record");

    const double fontSize = input.ConsumeFloatingPoint<double>();
    fuzz::require(close(parseWholeNumber(formatFontSize(fontSize)).value_or(NAN), fontSize, 2), "a size reads back");
    const Rgb written{input.ConsumeFloatingPoint<double>(), input.ConsumeProbability<double>(),
                      input.ConsumeFloatingPoint<double>()};
    const Rgb read = parseStoredColor(formatColor(written)).value_or(Rgb{NAN, NAN, NAN});  // green is never NaN
    fuzz::require(close(read.red, written.red, 6) && close(read.green, written.green, 6) &&
                      close(read.blue, written.blue, 6),
                  "a colour reads back");
    fuzz::require(parseStoredBool("true") && !parseStoredBool("false"), "the written booleans read back");
    return 0;
}
