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

}  // namespace tunelark
