#pragma once
#include "library/store/Store.h"

#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

struct Rgb {
    double red = 0;
    double green = 0;
    double blue = 0;
    bool operator==(const Rgb&) const = default;
};

// The desktop's neutral grey that lyrics take until the user picks a colour (sRGB).
inline constexpr Rgb kSystemGrey{0.556863, 0.556863, 0.576471};

// The four display settings with their defaults.
struct LyricsStyle {
    double oneRowFontSize = 18;
    double twoRowsFontSize = 14;
    Rgb fontColor = kSystemGrey;
    bool keepBackgroundColor = false;
};

// The setting keys, in the order the writer writes them.
inline constexpr std::string_view kOneRowFontSizeKey = "oneRowFontSize";
inline constexpr std::string_view kTwoRowsFontSizeKey = "twoRowsFontSize";
inline constexpr std::string_view kFontColorKey = "fontColor";
inline constexpr std::string_view kKeepBackgroundColorKey = "keepBackgroundColor";

// A whole text read as a C-locale floating-point number: no leading blank, nothing left over.
std::optional<double> parseWholeNumber(std::string_view text);
// Blanks, an optional sign and leading zeros skipped; then Y, y, T, t or 1-9 means true.
bool parseStoredBool(std::string_view text);
// Pieces split at ",", empty ones dropped, unreadable ones 0; nothing when fewer than three numbers.
std::optional<Rgb> parseStoredColor(std::string_view text);

// Applies every stored record with one of the four keys (exact match, value present), in the given
// order, so the last one wins. Keys not stored leave the style's values as they are.
void applyStoredSettings(const Records<SettingsEntity>& records, LyricsStyle& style);
// Reads the style from the store; a failed fetch leaves the given values.
void loadStoredSettings(Store& store, LyricsStyle& style);
// Writes the four keys in order (updating every matching record, or inserting one), then save changes.
void writeStoredSettings(Store& store, const LyricsStyle& style);

std::string formatFontSize(double size);  // "%.2f"
std::string formatColor(const Rgb& color);  // "%f,%f,%f"

}  // namespace tunelark
