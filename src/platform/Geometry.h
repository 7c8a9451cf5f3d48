#pragma once

namespace tunelark {

// Screen coordinates of the core: origin at the bottom left of the main screen, y growing upward, in
// points. platform/gtk converts to and from X11's top-left origin at the edge.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
    bool contains(Point p) const { return p.x >= x && p.x < x + width && p.y >= y && p.y < y + height; }
};

struct Screen {
    Rect frame;         // the whole monitor
    Rect visibleFrame;  // the work area: the monitor less panels and docks
};

}  // namespace tunelark
