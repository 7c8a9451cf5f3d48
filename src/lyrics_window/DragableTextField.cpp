#include "lyrics_window/DragableTextField.h"

#include "lyrics_window/LyricsWC.h"

namespace tunelark {

DragableTextField::DragableTextField(LyricsWindow& window, Hooks hooks) : window_(window), hooks_(std::move(hooks)) {
    Rect frame = window_.frame();
    size_ = {frame.width, frame.height};
    window_.setTextEvents(this);
}

DragableTextField::~DragableTextField() { window_.setTextEvents(nullptr); }

void DragableTextField::setFontSize(double points) { window_.setFontSize(points); }

void DragableTextField::setStringValue(const std::string& text) { window_.setText(text); }

void DragableTextField::setTextColor(const Rgb& color) { window_.setTextColor(opaque(color)); }

void DragableTextField::setBackgroundColor(const Rgba& color) { window_.setTextBackground(color); }

void DragableTextField::fitToText() { size_ = window_.naturalTextSize(); }

void DragableTextField::mouseDown(double secondsSince1970) {
    if (secondsSince1970 < lastMouseDownTime + kDoublePressInterval && hooks_.showMainWindow) hooks_.showMainWindow();
    // Also after a double press, so three quick presses count as two double presses.
    lastMouseDownTime = secondsSince1970;
    if (LyricsWC* controller = LyricsWC::shared) {
        controller->takeAnchorsFromFrame();
        controller->isMoving = true;
    }
}

void DragableTextField::mouseDragged(double deltaX, double deltaY) {
    LyricsWC* controller = LyricsWC::shared;
    if (controller == nullptr || !controller->isMoving) return;
    // Relative moves only: deltaY grows downward, the anchor's y upward.
    controller->movingCenterXWindow += deltaX;
    controller->movingCenterYWindow -= deltaY;
    Rect frame = controller->window().frame();
    controller->placeWindow(frame.width, frame.height);
}

void DragableTextField::mouseUp() {
    if (LyricsWC* controller = LyricsWC::shared) controller->isMoving = false;
}

void DragableTextField::mouseEntered() { setBackgroundColor(kHoverGrey); }

void DragableTextField::mouseExited() {
    if (hooks_.clearsBackgroundOnExit && hooks_.clearsBackgroundOnExit()) setBackgroundColor(kClearColor);
}

}  // namespace tunelark
