#include "library/store/Settings.h"

#include <array>
#include <charconv>

namespace tunelark {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

std::string formatFixed(double value, int decimals) {
    // to_chars with a precision formats as printf does in the "C" locale.
    std::array<char, 400> buffer{};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed,
                                decimals);
    if (result.ec != std::errc()) return {};
    return std::string(buffer.data(), result.ptr);
}

}  // namespace

double readFontSize(std::string_view text) { return parseWholeNumber(text).value_or(kUnreadableFontSize); }

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
        forEachLyricsSetting([&](const auto& setting) {
            if (*record->key != setting.key) return;
            if (auto value = setting.read(*record->value)) style.*setting.field = *value;
        });
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
        forEachLyricsSetting([&](const auto& setting) {
            writeKey(store, *records, setting.key, setting.write(style.*setting.field),
                     setting.fillsRecordsWithoutValue);
        });
    }
    store.saveChanges();
}

std::string formatFontSize(double size) { return formatFixed(size, 2); }

std::string formatColor(const Rgb& color) {
    return formatFixed(color.red, 6) + "," + formatFixed(color.green, 6) + "," + formatFixed(color.blue, 6);
}

}  // namespace tunelark
