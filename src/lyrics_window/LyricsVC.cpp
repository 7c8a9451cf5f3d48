#include "lyrics_window/LyricsVC.h"

#include "bridge/MainVC.h"
#include "lyrics_window/LyricsWC.h"

namespace tunelark {
namespace {

// 1 or 2 while the main view exists; anything else leaves the font alone.
int displayingRowNum() { return MainVC::shared != nullptr ? MainVC::shared->displayingRowNum : 0; }

}  // namespace

LyricsVC::LyricsVC(DragableTextField& field) : txtLyrics(&field) { shared = this; }

LyricsVC::~LyricsVC() {
    if (shared == this) shared = nullptr;
}

void LyricsVC::viewDidLoad(Store& store) {
    LyricsStyle style{oneRowFontSize, twoRowsFontSize, fontColor, keepBackgroundColor};
    loadStoredSettings(store, style);
    oneRowFontSize = style.oneRowFontSize;
    twoRowsFontSize = style.twoRowsFontSize;
    fontColor = style.fontColor;
    keepBackgroundColor = style.keepBackgroundColor;
    if (txtLyrics == nullptr) return;
    txtLyrics->setTextColor(fontColor);
    txtLyrics->setBackgroundColor(textBackground(keepBackgroundColor));
}

void LyricsVC::setLyricText(const std::string& text) {
    if (LyricsWC::shared == nullptr || txtLyrics == nullptr) return;
    int rows = displayingRowNum();
    if (rows == 2) txtLyrics->setFontSize(twoRowsFontSize);
    if (rows == 1) txtLyrics->setFontSize(oneRowFontSize);
    txtLyrics->setStringValue(text);
    fitPlaceAndPaint();
}

void LyricsVC::tryOneRowFontSize(const Rgb& color, double size) {
    oneRowFontSize = size;
    if (LyricsWC::shared == nullptr || txtLyrics == nullptr) return;
    if (displayingRowNum() == 1) {
        txtLyrics->setFontSize(size);
        txtLyrics->setTextColor(color);
    }
    fitPlaceAndPaint();
}

void LyricsVC::tryTwoRowsFontSize(const Rgb& color, double size) {
    twoRowsFontSize = size;
    if (LyricsWC::shared == nullptr || txtLyrics == nullptr) return;
    if (displayingRowNum() == 2) {
        txtLyrics->setFontSize(size);
        txtLyrics->setTextColor(color);
    }
    fitPlaceAndPaint();
}

void LyricsVC::fitPlaceAndPaint() {
    txtLyrics->fitToText();
    txtLyrics->setBackgroundColor(textBackground(keepBackgroundColor));
    LabelSize size = txtLyrics->size();
    LyricsWC::shared->placeWindow(size.width, size.height);
}

void setSharedLyricText(const std::string& text) {
    if (LyricsVC::shared != nullptr) LyricsVC::shared->setLyricText(text);
}

}  // namespace tunelark
