#pragma once
#include "platform/Geometry.h"

namespace tunelark {

// X11 places y downward from the top of the root window; the core places it upward from the bottom of
// the main screen. Both ways are the same mirror about the main screen's bottom edge
// (mainScreenBottom = its top + its height in X11 coordinates).
inline Rect flipFrame(const Rect& frame, double mainScreenBottom) {
    return Rect{frame.x, mainScreenBottom - frame.y - frame.height, frame.width, frame.height};
}

inline Point flipPoint(const Point& point, double mainScreenBottom) {
    return Point{point.x, mainScreenBottom - point.y};
}

}  // namespace tunelark
