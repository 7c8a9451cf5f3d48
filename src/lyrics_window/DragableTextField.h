#pragma once
#include "library/store/Settings.h"
#include "platform/LyricsWindow.h"

#include <functional>
#include <string>

namespace tunelark {

// The lyrics text's background while the pointer is over it, or always when the user keeps it.
inline constexpr Rgba kHoverGrey{0.4, 0.4, 0.4, 0.4};
inline constexpr Rgba kClearColor{0, 0, 0, 0};

inline Rgba textBackground(bool keepBackgroundColor) { return keepBackgroundColor ? kHoverGrey : kClearColor; }
inline Rgba opaque(const Rgb& color) { return {color.red, color.green, color.blue, 1}; }

// The lyrics text: shows the text in the window's label, and turns pointer events into moving the
// window and bringing back the main window. It fills the window. Main thread only.
class DragableTextField : public LyricsTextEvents {
public:
    // Two presses closer than this (seconds) bring back the main window.
    static constexpr double kDoublePressInterval = 0.3;

    struct Hooks {
        std::function<void()> showMainWindow;
        // True when the background should turn clear as the pointer leaves; false keeps it grey.
        std::function<bool()> clearsBackgroundOnExit;
    };

    DragableTextField(LyricsWindow& window, Hooks hooks);
    ~DragableTextField() override;
    DragableTextField(const DragableTextField&) = delete;
    DragableTextField& operator=(const DragableTextField&) = delete;

    // Time of the last press, seconds since 1970; 0 before the first.
    double lastMouseDownTime = 0;

    void setFontSize(double points);
    void setStringValue(const std::string& text);
    void setTextColor(const Rgb& color);
    void setBackgroundColor(const Rgba& color);
    // Takes the natural size of the current text in the current font; no wrapping, no limit.
    void fitToText();
    LabelSize size() const { return size_; }

    void mouseDown(double secondsSince1970) override;
    void mouseDragged(double deltaX, double deltaY) override;
    void mouseUp() override;
    void mouseEntered() override;
    void mouseExited() override;

private:
    LyricsWindow& window_;
    Hooks hooks_;
    LabelSize size_;
};

}  // namespace tunelark
