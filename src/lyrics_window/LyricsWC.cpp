#include "lyrics_window/LyricsWC.h"

namespace tunelark {

LyricsWC::LyricsWC(LyricsWindow& window) : window_(window) {
    shared = this;
    window_.setDelegate(this);
    takeAnchorsFromFrame();
}

LyricsWC::~LyricsWC() {
    window_.setDelegate(nullptr);
    if (shared == this) shared = nullptr;
}

void LyricsWC::takeAnchorsFromFrame() {
    Rect frame = window_.frame();
    movingCenterXWindow = frame.x + 0.5 * frame.width;
    movingCenterYWindow = frame.y - 0.5 * frame.height;
}

void LyricsWC::placeWindow(double width, double height) {
    window_.setFrame({movingCenterXWindow - width / 2, movingCenterYWindow + height / 2, width, height});
}

void LyricsWC::showWindow() { window_.show(); }

void LyricsWC::hideWindow() { window_.hide(); }

void LyricsWC::windowDidResignKey() { isMoving = false; }

bool LyricsWC::windowShouldClose() {
    // Closing only hides: the controllers, the style and the anchors stay for the next "show".
    window_.hide();
    return true;
}

}  // namespace tunelark
