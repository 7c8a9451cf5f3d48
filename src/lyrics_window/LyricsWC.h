#pragma once
#include "platform/LyricsWindow.h"

namespace tunelark {

// The lyrics window's controller: keeps the anchor the window is placed around whenever its text
// changes, and the drag state. Main thread only.
class LyricsWC : public LyricsWindowDelegate {
public:
    // The newest controller; set on creation. Cleared only when that controller is destroyed, which the
    // application does not do before it quits.
    static inline LyricsWC* shared = nullptr;

    // Becomes the window's delegate and takes the anchor from the window's initial frame.
    explicit LyricsWC(LyricsWindow& window);
    ~LyricsWC() override;
    LyricsWC(const LyricsWC&) = delete;
    LyricsWC& operator=(const LyricsWC&) = delete;

    bool isMoving = false;
    // Horizontal anchor: left edge plus half the width.
    double movingCenterXWindow = 0;
    // Vertical anchor: bottom edge MINUS half the height; placing adds half the new height back, so a
    // taller window grows upward by half of what it gains.
    double movingCenterYWindow = 0;

    LyricsWindow& window() { return window_; }

    void takeAnchorsFromFrame();
    // Sets the window's frame to this size around the anchors; the anchors stay.
    void placeWindow(double width, double height);
    void showWindow();
    void hideWindow();

    void windowDidResignKey() override;
    bool windowShouldClose() override;

private:
    LyricsWindow& window_;
};

}  // namespace tunelark
