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
    virtual bool isVisible() const = 0;
    // Makes the window visible and brings it to the front.
    virtual void show() = 0;
    virtual void hide() = 0;
    // Starts a window-manager move with the last button press recorded in the web view; false when no
    // press was recorded.
    virtual bool beginDragFromLastPress() = 0;
};

// Monitors and pointer, in core coordinates.
class Screens {
public:
    virtual ~Screens() = default;
    virtual std::vector<Screen> all() const = 0;  // the first is the main screen
    virtual Point pointerPosition() const = 0;
};

}  // namespace tunelark
