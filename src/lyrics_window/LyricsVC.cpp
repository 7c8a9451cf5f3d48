#include "lyrics_window/LyricsVC.h"

#include "lyrics_window/LyricsWC.h"

namespace tunelark {
LyricsVC::LyricsVC(DragableTextField& field, const PageState& page) : txtLyrics(&field), page_(page) {
    shared = this;
}

LyricsVC::~LyricsVC() {
    if (shared == this) shared = nullptr;
}

void LyricsVC::loadStyle(Store& store) {
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
    int rows = page_.displayingRowNum;
    if (rows == 2) txtLyrics->setFontSize(twoRowsFontSize);
    if (rows == 1) txtLyrics->setFontSize(oneRowFontSize);
    txtLyrics->setStringValue(text);
    fitPlaceAndPaint();
}

void LyricsVC::tryOneRowFontSize(const Rgb& color, double size) {
    oneRowFontSize = size;
    if (LyricsWC::shared == nullptr || txtLyrics == nullptr) return;
    if (page_.displayingRowNum == 1) {
        txtLyrics->setFontSize(size);
        txtLyrics->setTextColor(color);
    }
    fitPlaceAndPaint();
}

void LyricsVC::tryTwoRowsFontSize(const Rgb& color, double size) {
    twoRowsFontSize = size;
    if (LyricsWC::shared == nullptr || txtLyrics == nullptr) return;
    if (page_.displayingRowNum == 2) {
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
