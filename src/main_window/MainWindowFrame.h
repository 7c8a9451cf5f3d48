#pragma once
#include "platform/Geometry.h"

namespace tunelark {

// The main window's normal size, which its first showing and the maximise toggle's restore both use.
inline constexpr double kMainWindowWidth = 1200;
inline constexpr double kMainWindowHeight = 600;
// A main window narrower than this has not been given its size yet.
inline constexpr double kMainWindowSizedWidth = 100;

// The normal frame centred on an area; the area's origin is not added.
inline Rect normalFrameCentredIn(const Rect& area) {
    return Rect{(area.width - kMainWindowWidth) / 2, (area.height - kMainWindowHeight) / 2, kMainWindowWidth,
                kMainWindowHeight};
}

// The normal frame centred on an area, wherever the area lies.
inline Rect normalFrameCentredOn(const Rect& area) {
    const Rect centred = normalFrameCentredIn(area);
    return Rect{area.x + centred.x, area.y + centred.y, centred.width, centred.height};
}

}  // namespace tunelark
