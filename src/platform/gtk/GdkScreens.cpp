#include "platform/gtk/GdkScreens.h"

#include "platform/gtk/ScreenCoordinates.h"

#include <gtk/gtk.h>

namespace tunelark {
namespace {

GdkMonitor* mainMonitor(GdkDisplay* display) {
    GdkMonitor* primary = gdk_display_get_primary_monitor(display);
    return primary ? primary : gdk_display_get_monitor(display, 0);
}

Rect toRect(const GdkRectangle& r) { return Rect{double(r.x), double(r.y), double(r.width), double(r.height)}; }

Screen screenOf(GdkMonitor* monitor, double axis) {
    GdkRectangle geometry{};
    GdkRectangle workarea{};
    gdk_monitor_get_geometry(monitor, &geometry);
    gdk_monitor_get_workarea(monitor, &workarea);
    return Screen{flipFrame(toRect(geometry), axis), flipFrame(toRect(workarea), axis)};
}

}  // namespace

double GdkScreens::mainScreenBottom() {
    GdkDisplay* display = gdk_display_get_default();
    GdkMonitor* monitor = display ? mainMonitor(display) : nullptr;
    if (!monitor) return 0;
    GdkRectangle geometry{};
    gdk_monitor_get_geometry(monitor, &geometry);
    return geometry.y + geometry.height;
}

std::vector<Screen> GdkScreens::all() const {
    std::vector<Screen> screens;
    GdkDisplay* display = gdk_display_get_default();
    if (!display) return screens;
    GdkMonitor* main = mainMonitor(display);
    if (!main) return screens;
    const double axis = mainScreenBottom();
    screens.push_back(screenOf(main, axis));
    for (int i = 0, n = gdk_display_get_n_monitors(display); i < n; ++i) {
        GdkMonitor* monitor = gdk_display_get_monitor(display, i);
        if (monitor != main) screens.push_back(screenOf(monitor, axis));
    }
    return screens;
}

Point GdkScreens::pointerPosition() const {
    GdkDisplay* display = gdk_display_get_default();
    GdkSeat* seat = display ? gdk_display_get_default_seat(display) : nullptr;
    GdkDevice* pointer = seat ? gdk_seat_get_pointer(seat) : nullptr;
    if (!pointer) return Point{-1e9, -1e9};  // on no screen
    int x = 0;
    int y = 0;
    gdk_device_get_position(pointer, nullptr, &x, &y);
    return flipPoint(Point{double(x), double(y)}, mainScreenBottom());
}

}  // namespace tunelark
