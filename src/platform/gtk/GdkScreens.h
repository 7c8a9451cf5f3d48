#pragma once
#include "platform/MainWindow.h"

namespace tunelark {

// The display's monitors and the pointer, converted to core coordinates. The primary monitor (or the
// first, when the display names none) is the main screen.
class GdkScreens : public Screens {
public:
    std::vector<Screen> all() const override;
    Point pointerPosition() const override;

    // The bottom edge of the main screen in X11 coordinates: the axis of the conversion.
    static double mainScreenBottom();
};

}  // namespace tunelark
