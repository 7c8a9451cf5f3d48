// Test support: clicks a place of an X11 window with events sent to the window itself, without moving
// the pointer or using XTEST (a Wayland compositor without input devices has no pointer to move).
// Usage: tl-x11-click WINDOW X Y   (the window's id; X and Y within it)
#include <X11/Xlib.h>

#include <cstdio>
#include <cstdlib>

namespace {

void send(Display* display, Window window, int type, int x, int y, int rootX, int rootY, unsigned state) {
    XEvent event{};
    if (type == MotionNotify) {
        event.xmotion = XMotionEvent{MotionNotify, 0, True, display, window, DefaultRootWindow(display), None,
                                     CurrentTime, x, y, rootX, rootY, state, NotifyNormal, True};
        XSendEvent(display, window, True, PointerMotionMask, &event);
        return;
    }
    event.xbutton = XButtonEvent{type, 0, True, display, window, DefaultRootWindow(display), None, CurrentTime,
                                 x, y, rootX, rootY, state, Button1, True};
    XSendEvent(display, window, True, type == ButtonPress ? ButtonPressMask : ButtonReleaseMask, &event);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: tl-x11-click WINDOW X Y\n");
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "tl-x11-click: cannot open the display\n");
        return 1;
    }
    const Window window = std::strtoul(argv[1], nullptr, 0);
    const int x = std::atoi(argv[2]);
    const int y = std::atoi(argv[3]);
    int rootX = 0;
    int rootY = 0;
    Window child = None;
    XTranslateCoordinates(display, window, DefaultRootWindow(display), x, y, &rootX, &rootY, &child);
    send(display, window, MotionNotify, x, y, rootX, rootY, 0);
    send(display, window, ButtonPress, x, y, rootX, rootY, 0);
    send(display, window, ButtonRelease, x, y, rootX, rootY, Button1Mask);
    XSync(display, False);
    XCloseDisplay(display);
    return 0;
}
