#include "preferences/PreferenceVC.h"

#include "lyrics_window/LyricsVC.h"
#include "platform/Console.h"
#include "preferences/DoubleValueFormatter.h"

#include <cmath>

namespace tunelark {
namespace {

constexpr double kMinFontSize = 10;
constexpr double kMaxFontSize = 100;
// Smaller differences are typing noise, not a new size worth a preview.
constexpr double kSizeChangeThreshold = 0.01;

// The well's colour as an opaque sRGB colour; nothing when it has no sRGB equivalent.
std::optional<Rgb> srgbOf(const Rgba& color) {
    for (double component : {color.red, color.green, color.blue})
        if (!std::isfinite(component) || component < 0 || component > 1) return std::nullopt;
    return Rgb{color.red, color.green, color.blue};
}

void setLyricsBackground(bool keep) {
    LyricsVC* lyrics = LyricsVC::shared;
    if (lyrics == nullptr) return;
    lyrics->keepBackgroundColor = keep;
    if (lyrics->txtLyrics != nullptr) lyrics->txtLyrics->setBackgroundColor(textBackground(keep));
}

}  // namespace

PreferenceVC::PreferenceVC(PreferencesWindow& window, Store& store, MainQueue& queue)
    : window_(window), store_(store), queue_(queue) {
    shared = this;
}

PreferenceVC::~PreferenceVC() {
    if (shared == this) shared = nullptr;
}

void PreferenceVC::loadSettings() {
    LyricsStyle style{currentOneRowFontSize, currentTwoRowsFontSize, currentFontColor, currentKeepBackgroundColor};
    loadStoredSettings(store_, style);
    currentOneRowFontSize = tryingOneRowFontSize = style.oneRowFontSize;
    currentTwoRowsFontSize = tryingTwoRowsFontSize = style.twoRowsFontSize;
    currentFontColor = tryingFontColor = style.fontColor;
    currentKeepBackgroundColor = tryingKeepBackgroundColor = style.keepBackgroundColor;
    // The well starts with the current colour, which is the system grey when none is stored.
    window_.setColorWellColor(opaque(currentFontColor));

    for (SizeField field : {SizeField::OneRow, SizeField::TwoRows}) {
        window_.setInputFilter(field, [formatter = DoubleValueFormatter()](const std::string& text) {
            return formatter.isPartialStringValid(text, nullptr, nullptr);
        });
    }
    window_.setFieldText(SizeField::OneRow, formatFontSize(currentOneRowFontSize));
    window_.setFieldText(SizeField::TwoRows, formatFontSize(currentTwoRowsFontSize));
    stopPollTimer();
    window_.setCheckBoxOn(currentKeepBackgroundColor);
    pollTimer_ = queue_.startRepeating(kPollInterval, [] {
        if (PreferenceVC::shared != nullptr) PreferenceVC::shared->pollEditedValues();
    });
}

void PreferenceVC::pollEditedValues() {
    pollSizeField(SizeField::OneRow);
    pollSizeField(SizeField::TwoRows);
    std::optional<Rgb> wellColor = srgbOf(window_.colorWellColor());
    if (wellColor && *wellColor != tryingFontColor) {
        tryingFontColor = *wellColor;
        previewSize(SizeField::OneRow);
        previewSize(SizeField::TwoRows);
    }
    tryingKeepBackgroundColor = window_.checkBoxOn();
}

// The field's text is never rewritten here: it may show 5 while the trying size is 10.
void PreferenceVC::pollSizeField(SizeField field) {
    std::string text = window_.fieldText(field);
    if (text.empty()) return;
    // A field holding only a point (or anything else that is no number) reads as the stored sizes do.
    double value = readFontSize(text);
    if (value < kMinFontSize) value = kMinFontSize;
    if (value > kMaxFontSize) value = kMaxFontSize;
    double& trying = field == SizeField::OneRow ? tryingOneRowFontSize : tryingTwoRowsFontSize;
    if (std::abs(value - trying) > kSizeChangeThreshold) {
        trying = value;
        previewSize(field);
    }
}

void PreferenceVC::previewSize(SizeField field) {
    LyricsVC* lyrics = LyricsVC::shared;
    if (lyrics == nullptr) return;
    if (field == SizeField::OneRow)
        lyrics->tryOneRowFontSize(tryingFontColor, tryingOneRowFontSize);
    else
        lyrics->tryTwoRowsFontSize(tryingFontColor, tryingTwoRowsFontSize);
}

void PreferenceVC::applySizeValue(SizeField field, double value) {
    (field == SizeField::OneRow ? tryingOneRowFontSize : tryingTwoRowsFontSize) = value;
    window_.setFieldText(field, formatFontSize(value));
    previewSize(field);
}

void PreferenceVC::applyColorValue(const Rgb& color) {
    tryingFontColor = color;
    window_.setColorWellColor(opaque(color));
    previewSize(SizeField::OneRow);
    previewSize(SizeField::TwoRows);
}

void PreferenceVC::clickOneRowDefault() { applySizeValue(SizeField::OneRow, defaultOneRowFontSize); }
void PreferenceVC::clickOneRowReset() { applySizeValue(SizeField::OneRow, currentOneRowFontSize); }
void PreferenceVC::clickTwoRowDefault() { applySizeValue(SizeField::TwoRows, defaultTwoRowsFontSize); }
void PreferenceVC::clickTwoRowsReset() { applySizeValue(SizeField::TwoRows, currentTwoRowsFontSize); }
void PreferenceVC::clickColorReset() { applyColorValue(currentFontColor); }
void PreferenceVC::clickColorDefault() { applyColorValue(defaultFontColor); }

void PreferenceVC::clickedKeepBackgroundColor(bool on) {
    tryingKeepBackgroundColor = on;
    consoleLine(std::string("tryingKeepBackgroundColor::") + (on ? "true" : "false"));
    setLyricsBackground(on);
}

void PreferenceVC::revertToCurrent() {
    window_.deactivateColorWell();
    tryingFontColor = currentFontColor;
    tryingOneRowFontSize = currentOneRowFontSize;
    window_.setFieldText(SizeField::OneRow, formatFontSize(tryingOneRowFontSize));
    previewSize(SizeField::OneRow);
    tryingTwoRowsFontSize = currentTwoRowsFontSize;
    window_.setFieldText(SizeField::TwoRows, formatFontSize(tryingTwoRowsFontSize));
    previewSize(SizeField::TwoRows);
    setLyricsBackground(currentKeepBackgroundColor);
}

void PreferenceVC::clickConfirm() {
    window_.deactivateColorWell();
    currentOneRowFontSize = tryingOneRowFontSize;
    currentTwoRowsFontSize = tryingTwoRowsFontSize;
    currentFontColor = tryingFontColor;
    currentKeepBackgroundColor = tryingKeepBackgroundColor;
    writeStoredSettings(store_, {currentOneRowFontSize, currentTwoRowsFontSize, currentFontColor,
                                 currentKeepBackgroundColor});
    // Closing reverts to the current values, which now are the confirmed ones.
    window_.close();
}

void PreferenceVC::clickCancel() { window_.close(); }

}  // namespace tunelark
