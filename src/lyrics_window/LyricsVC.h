#pragma once
#include "library/store/Settings.h"
#include "library/store/Store.h"
#include "lyrics_window/DragableTextField.h"
#include "page/PageState.h"

#include <string>

namespace tunelark {

// The lyrics text's controller: owns the display style, shows each new lyric text and re-places the
// window around its anchor, and previews edited styles for the preferences. Main thread only.
class LyricsVC {
public:
    // The newest controller; set on creation. Cleared only when that controller is destroyed, which the
    // application does not do before it quits.
    static inline LyricsVC* shared = nullptr;

    // The row mode is read from the page state at each text and preview.
    LyricsVC(DragableTextField& field, const PageState& page);
    ~LyricsVC();
    LyricsVC(const LyricsVC&) = delete;
    LyricsVC& operator=(const LyricsVC&) = delete;

    // The display style, from the defaults of the settings table until loadStyle reads the store.
    double oneRowFontSize = LyricsStyle{}.oneRowFontSize;
    double twoRowsFontSize = LyricsStyle{}.twoRowsFontSize;
    Rgb fontColor = LyricsStyle{}.fontColor;
    bool keepBackgroundColor = LyricsStyle{}.keepBackgroundColor;
    DragableTextField* txtLyrics = nullptr;

    // Reads the style from the store once and applies its colour and background. The font stays as it
    // is until the first text.
    void loadStyle(Store& store);

    // Called every clock tick, also with an unchanged text: it touches neither store nor settings.
    void setLyricText(const std::string& text);
    // Previews: the size is kept; font and colour show only while the matching row mode is on.
    void tryOneRowFontSize(const Rgb& color, double size);
    void tryTwoRowsFontSize(const Rgb& color, double size);

private:
    void fitPlaceAndPaint();

    const PageState& page_;
};

// The playback clock's sink for the lyric text: shows it on the lyrics window when there is one.
void setSharedLyricText(const std::string& text);

}  // namespace tunelark
