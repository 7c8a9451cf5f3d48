#pragma once
#include "library/store/Store.h"
#include "platform/WholeNumber.h"

#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace tunelark {

struct Rgb {
    double red = 0;
    double green = 0;
    double blue = 0;
    bool operator==(const Rgb&) const = default;
};

// The desktop's neutral grey that lyrics take until the user picks a colour (sRGB).
inline constexpr Rgb kSystemGrey{0.556863, 0.556863, 0.576471};

// The size, in points, that a stored or typed size that is no number means (either row mode).
inline constexpr double kUnreadableFontSize = 18;

// The four display settings; a style made with {} holds their defaults.
struct LyricsStyle {
    double oneRowFontSize = 18;
    double twoRowsFontSize = 14;
    Rgb fontColor = kSystemGrey;
    bool keepBackgroundColor = false;
};

// Blanks, an optional sign and leading zeros skipped; then Y, y, T, t or 1-9 means true.
bool parseStoredBool(std::string_view text);
// Pieces split at ",", empty ones dropped, unreadable ones 0; nothing when fewer than three numbers.
std::optional<Rgb> parseStoredColor(std::string_view text);
// A whole-text number, or kUnreadableFontSize.
double readFontSize(std::string_view text);

std::string formatFontSize(double size);    // "%.2f"
std::string formatColor(const Rgb& color);  // "%f,%f,%f"

// One stored display setting: its key, the style's field that holds it (its default is that field of
// LyricsStyle{}), how a stored text is read (nothing: the value in force stays) and how it is written.
template <typename T>
struct LyricsSetting {
    std::string_view key;
    T LyricsStyle::*field;
    std::optional<T> (*read)(std::string_view stored);
    std::string (*write)(const T& value);
    // Only the one-row size also fills records that have its key but no value.
    bool fillsRecordsWithoutValue = false;

    T defaultValue() const { return LyricsStyle{}.*field; }
};

namespace settings_rows {
inline std::optional<double> size(std::string_view stored) { return readFontSize(stored); }
inline std::optional<bool> flag(std::string_view stored) { return parseStoredBool(stored); }
inline std::string sizeText(const double& size) { return formatFontSize(size); }
inline std::string flagText(const bool& on) { return on ? "true" : "false"; }
}  // namespace settings_rows

// The four settings in the order the writer writes them.
inline constexpr std::tuple kLyricsSettings{
    LyricsSetting<double>{"oneRowFontSize", &LyricsStyle::oneRowFontSize, settings_rows::size,
                          settings_rows::sizeText, true},
    LyricsSetting<double>{"twoRowsFontSize", &LyricsStyle::twoRowsFontSize, settings_rows::size,
                          settings_rows::sizeText},
    LyricsSetting<Rgb>{"fontColor", &LyricsStyle::fontColor, parseStoredColor, formatColor},
    LyricsSetting<bool>{"keepBackgroundColor", &LyricsStyle::keepBackgroundColor, settings_rows::flag,
                        settings_rows::flagText},
};

// Calls visit(row) for each row of kLyricsSettings, in order.
template <typename Visit>
void forEachLyricsSetting(Visit&& visit) {
    std::apply([&](const auto&... row) { (visit(row), ...); }, kLyricsSettings);
}

// Applies every stored record with one of the four keys (exact match, value present), in the given
// order, so the last one wins. Keys not stored leave the style's values as they are.
void applyStoredSettings(const Records<SettingsEntity>& records, LyricsStyle& style);
// Reads the style from the store; a failed fetch leaves the given values.
void loadStoredSettings(Store& store, LyricsStyle& style);
// Writes the four keys in order (updating every matching record, or inserting one), then save changes.
void writeStoredSettings(Store& store, const LyricsStyle& style);

}  // namespace tunelark
