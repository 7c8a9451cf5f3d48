#pragma once
#include "platform/Geometry.h"

#include <string>

namespace tunelark {

// A colour in sRGB with straight (not premultiplied) alpha, every component 0 to 1.
struct Rgba {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const Rgba&) const = default;
};

struct LabelSize {
    double width = 0;
    double height = 0;
    bool operator==(const LabelSize&) const = default;
};

// What the pointer does on the lyrics text. Called on the main thread from the event loop, never from
// inside a LyricsWindow call.
class LyricsTextEvents {
public:
    virtual ~LyricsTextEvents() = default;
    // A press of the primary button; the wall-clock time in seconds since 1970.
    virtual void mouseDown(double secondsSince1970) = 0;
    // Movement with the primary button held, since the previous event: deltaY is positive when the
    // pointer moves down the screen.
    virtual void mouseDragged(double deltaX, double deltaY) = 0;
    // Release of the primary button, wherever the pointer is by then.
    virtual void mouseUp() = 0;
    virtual void mouseEntered() = 0;
    virtual void mouseExited() = 0;
};

// What happens to the lyrics window as a whole. Same thread and re-entry rules as LyricsTextEvents.
class LyricsWindowDelegate {
public:
    virtual ~LyricsWindowDelegate() = default;
    // The window lost the keyboard focus.
    virtual void windowDidResignKey() = 0;
    // The user asked to close the window; true lets it go out of sight (it is never destroyed).
    virtual bool windowShouldClose() = 0;
};

// The floating lyrics window: undecorated, above ordinary windows, out of the task bar, with a
// transparent background so that only the label's own background shows. The label fills the window.
// Frames are in core coordinates (Geometry.h). Main thread only; setters that repeat what is already
// shown cost nothing.
class LyricsWindow {
public:
    virtual ~LyricsWindow() = default;

    virtual void setTextEvents(LyricsTextEvents* events) = 0;
    virtual void setDelegate(LyricsWindowDelegate* delegate) = 0;

    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& frame) = 0;
    // Visible, focused and in front.
    virtual void show() = 0;
    // Out of sight; the window and its state stay.
    virtual void hide() = 0;
    virtual bool isVisible() const = 0;

    virtual void setText(const std::string& text) = 0;
    // The system font at this size in points.
    virtual void setFontSize(double points) = 0;
    virtual void setTextColor(const Rgba& color) = 0;
    virtual void setTextBackground(const Rgba& color) = 0;
    // The label's natural size for its current text and font, its padding included; no wrapping.
    virtual LabelSize naturalTextSize() = 0;
};

}  // namespace tunelark
