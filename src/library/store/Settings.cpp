#include "library/store/Settings.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <locale.h>

namespace tunelark {

namespace {

constexpr double kUnreadableFontSize = 18;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

// The "C" locale, made once: stored numbers use "." whatever the user's locale says.
locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return locale;
}

std::string formatFixed(double value, int decimals) {
    // to_chars with a precision formats as printf does in the "C" locale.
    std::array<char, 400> buffer{};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed,
                                decimals);
    if (result.ec != std::errc()) return {};
    return std::string(buffer.data(), result.ptr);
}

}  // namespace

std::optional<double> parseWholeNumber(std::string_view text) {
    if (text.empty() || isBlank(text.front())) return std::nullopt;
    const std::string copy(text);  // strtod needs a terminated text
    char* end = nullptr;
    const locale_t locale = cLocale();
    const double value = locale ? strtod_l(copy.c_str(), &end, locale) : std::strtod(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size()) return std::nullopt;
    return value;
}

bool parseStoredBool(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && isBlank(text[i])) ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    while (i < text.size() && text[i] == '0') ++i;
    if (i == text.size()) return false;
    const char c = text[i];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

std::optional<Rgb> parseStoredColor(std::string_view text) {
    std::array<double, 3> numbers{};
    std::size_t found = 0;
    std::size_t start = 0;
    while (start <= text.size() && found < numbers.size()) {
        std::size_t comma = text.find(',', start);
        if (comma == std::string_view::npos) comma = text.size();
        const auto piece = text.substr(start, comma - start);
        if (!piece.empty()) numbers[found++] = parseWholeNumber(piece).value_or(0);
        start = comma + 1;
    }
    if (found < numbers.size()) return std::nullopt;
    return Rgb{numbers[0], numbers[1], numbers[2]};
}

void applyStoredSettings(const Records<SettingsEntity>& records, LyricsStyle& style) {
    for (const auto& record : records) {
        if (!record || !record->key || !record->value) continue;
        const std::string& key = *record->key;
        const std::string& value = *record->value;
        if (key == kOneRowFontSizeKey) {
            style.oneRowFontSize = parseWholeNumber(value).value_or(kUnreadableFontSize);
        } else if (key == kTwoRowsFontSizeKey) {
            style.twoRowsFontSize = parseWholeNumber(value).value_or(kUnreadableFontSize);
        } else if (key == kFontColorKey) {
            // Fewer than three numbers: the colour in force stays.
            if (auto color = parseStoredColor(value)) style.fontColor = *color;
        } else if (key == kKeepBackgroundColorKey) {
            style.keepBackgroundColor = parseStoredBool(value);
        }
    }
}

void loadStoredSettings(Store& store, LyricsStyle& style) {
    if (auto records = store.fetchSettingsEntities()) applyStoredSettings(*records, style);
}

namespace {

// Sets the value on the records that count for the key, or inserts one record when none does.
void writeKey(Store& store, const Records<SettingsEntity>& records, std::string_view key, const std::string& value,
              bool countRecordsWithoutValue) {
    bool updated = false;
    for (const auto& record : records) {
        if (!record || record->key != key) continue;
        if (!countRecordsWithoutValue && !record->value) continue;
        record->value = value;
        updated = true;
    }
    if (updated) return;
    auto record = store.insertSettingsEntity();
    record->key = std::string(key);
    record->value = value;
}

}  // namespace

void writeStoredSettings(Store& store, const LyricsStyle& style) {
    if (auto records = store.fetchSettingsEntities()) {
        // Only the one-row size also fills records that have a key but no value.
        writeKey(store, *records, kOneRowFontSizeKey, formatFontSize(style.oneRowFontSize), true);
        writeKey(store, *records, kTwoRowsFontSizeKey, formatFontSize(style.twoRowsFontSize), false);
        writeKey(store, *records, kFontColorKey, formatColor(style.fontColor), false);
        writeKey(store, *records, kKeepBackgroundColorKey, style.keepBackgroundColor ? "true" : "false", false);
    }
    store.saveChanges();
}

std::string formatFontSize(double size) { return formatFixed(size, 2); }

std::string formatColor(const Rgb& color) {
    return formatFixed(color.red, 6) + "," + formatFixed(color.green, 6) + "," + formatFixed(color.blue, 6);
}

}  // namespace tunelark
