#pragma once
#include "platform/Geometry.h"

#include <vector>

namespace tunelark {

// The main window that holds the page. Frames are in core coordinates (Geometry.h). Main thread only.
class MainWindow {
public:
    virtual ~MainWindow() = default;
    // (0, 0, 0, 0) while the window has never been shown.
    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& frame) = 0;
    virtual void setMinimumSize(double width, double height) = 0;
    // On screen: shown, and neither minimised nor (where the desktop tells) fully covered.
    virtual bool isVisible() const = 0;
    // Makes the window visible and brings it to the front.
    virtual void show() = 0;
    virtual void hide() = 0;
    // Lets the window follow the pointer from the last button press recorded in the web view, once the
    // pointer moves beyond the drag threshold with that button down; a press alone never moves it.
    // False when no press is held.
    virtual bool beginDragFromLastPress() = 0;

    // Whether a window manager carries out maximise requests (a bare X server has none).
    virtual bool windowManagerMaximizes() const = 0;
    // The maximised state as the window manager last reported it; false without one.
    virtual bool isMaximized() const = 0;
    // Asks the window manager to maximise the window; isMaximized() follows when it reports back.
    virtual void maximize() = 0;
    // Asks the window manager to end the maximised state, then gives the window `restored` once it has.
    virtual void unmaximize(const Rect& restored) = 0;
};

// Monitors and pointer, in core coordinates.
class Screens {
public:
    virtual ~Screens() = default;
    virtual std::vector<Screen> all() const = 0;  // the first is the main screen
    virtual Point pointerPosition() const = 0;
};

}  // namespace tunelark
