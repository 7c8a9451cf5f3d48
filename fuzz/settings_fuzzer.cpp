// The settings readers given stored records with any keys and texts, and the writer's formats read
// back. Checks: the last readable record of each key wins, a text the standard library reads as a whole
// number reads as that number, a blank in front refuses it, and every value the writer formats reads
// back as (nearly) itself.
#include "FuzzChecks.h"
#include "library/store/Settings.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tunelark {
namespace {

bool same(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

bool close(double read, double written, double decimals) {
    if (std::isnan(written)) return std::isnan(read);
    if (std::isinf(written)) return read == written;
    return std::abs(read - written) <= 0.5 * std::pow(10.0, -decimals) + std::abs(written) * 1e-15;
}

// Numbers the standard library reads as a whole text must read the same way here.
void checkNumber(const std::string& text) {
    const std::optional<double> read = parseWholeNumber(text);
    if (!text.empty() && std::strchr(" \t\n\v\f\r", text.front()) != nullptr && text.front() != '\0') {
        fuzz::require(!read, "a blank in front refuses the number");
    }
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size()) {
        fuzz::require(read && same(*read, value), "a whole decimal number reads as itself");
    }
}

// The pieces between commas, empty ones dropped: the colour is the first three read as numbers.
void checkColor(const std::string& text) {
    std::vector<double> numbers;
    std::stringstream pieces(text);
    for (std::string piece; std::getline(pieces, piece, ',');) {
        if (!piece.empty()) numbers.push_back(parseWholeNumber(piece).value_or(0));
    }
    const std::optional<Rgb> color = parseStoredColor(text);
    fuzz::require(color.has_value() == (numbers.size() >= 3), "a colour needs three numbers");
    if (color) {
        fuzz::require(same(color->red, numbers[0]) && same(color->green, numbers[1]) && same(color->blue, numbers[2]),
                      "the colour is the first three numbers");
    }
}

// The style the records should give: per key, the last record that has a value (for the colour, the
// last one that reads as a colour), else the defaults.
LyricsStyle expectedStyle(const Records<SettingsEntity>& records) {
    LyricsStyle style;
    bool one = false, two = false, color = false, keep = false;
    for (auto it = records.rbegin(); it != records.rend(); ++it) {
        const SettingsEntity& r = **it;
        if (!r.key || !r.value) continue;
        if (*r.key == kOneRowFontSizeKey && !one) {
            style.oneRowFontSize = parseWholeNumber(*r.value).value_or(18);
            one = true;
        } else if (*r.key == kTwoRowsFontSizeKey && !two) {
            style.twoRowsFontSize = parseWholeNumber(*r.value).value_or(18);
            two = true;
        } else if (*r.key == kFontColorKey && !color) {
            if (auto c = parseStoredColor(*r.value)) {
                style.fontColor = *c;
                color = true;
            }
        } else if (*r.key == kKeepBackgroundColorKey && !keep) {
            style.keepBackgroundColor = parseStoredBool(*r.value);
            keep = true;
        }
    }
    return style;
}

void checkWriterFormats(FuzzedDataProvider& input) {
    const double size = input.ConsumeFloatingPoint<double>();
    fuzz::require(close(parseWholeNumber(formatFontSize(size)).value_or(NAN), size, 2), "a font size reads back");
    const Rgb written{input.ConsumeFloatingPoint<double>(), input.ConsumeProbability<double>(),
                      input.ConsumeFloatingPoint<double>()};
    const std::optional<Rgb> read = parseStoredColor(formatColor(written));
    fuzz::require(read && close(read->red, written.red, 6) && close(read->green, written.green, 6) &&
                      close(read->blue, written.blue, 6),
                  "a colour reads back");
    fuzz::require(parseStoredBool("true") && !parseStoredBool("false"), "the written booleans read back");
}

}  // namespace
}  // namespace tunelark

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tunelark;
    FuzzedDataProvider input(data, size);
    static const std::string keys[] = {std::string(kOneRowFontSizeKey), std::string(kTwoRowsFontSizeKey),
                                       std::string(kFontColorKey), std::string(kKeepBackgroundColorKey)};
    Records<SettingsEntity> records;
    const int count = input.ConsumeIntegralInRange(0, 8);
    for (int i = 0; i < count; ++i) {
        auto record = std::make_shared<SettingsEntity>();
        const int pick = input.ConsumeIntegralInRange(0, 5);
        if (pick < 4) record->key = keys[pick];
        if (pick == 4) record->key = input.ConsumeRandomLengthString(32);
        if (input.ConsumeIntegralInRange(0, 7) != 0) record->value = input.ConsumeRandomLengthString(64);
        if (record->value) {
            checkNumber(*record->value);
            checkColor(*record->value);
            (void)parseStoredBool(*record->value);
        }
        records.push_back(std::move(record));
    }
    records.push_back(nullptr);  // a hole in a fetched list is skipped, never read

    LyricsStyle style;
    applyStoredSettings(records, style);
    records.pop_back();
    const LyricsStyle expected = expectedStyle(records);
    fuzz::require(same(style.oneRowFontSize, expected.oneRowFontSize) &&
                      same(style.twoRowsFontSize, expected.twoRowsFontSize) &&
                      same(style.fontColor.red, expected.fontColor.red) &&
                      same(style.fontColor.green, expected.fontColor.green) &&
                      same(style.fontColor.blue, expected.fontColor.blue) &&
                      style.keepBackgroundColor == expected.keepBackgroundColor,
                  "each key takes its last readable record");

    checkWriterFormats(input);
    return 0;
}
