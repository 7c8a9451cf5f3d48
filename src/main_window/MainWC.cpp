#include "main_window/MainWC.h"

#include "bridge/MainWindowFrame.h"

#include <utility>

namespace tunelark {

MainWC::MainWC(MainWindow& window, const Screens& screens, ExitProcess exitProcess)
    : window_(window), screens_(screens), exitProcess_(std::move(exitProcess)) {
    shared = this;
}

void MainWC::windowShouldClose() {
    window_.hide();
    if (exitProcess_) exitProcess_(0);
}

void MainWC::showWindow() {
    if (window_.frame().width < kMainWindowSizedWidth) return;
    window_.show();
}

void MainWC::startMoveWindow() { window_.beginDragFromLastPress(); }

void MainWC::changeMaxMin() {
    const auto screens = screens_.all();
    const Rect current = window_.frame();
    // The window manager's state decides first: its maximised frame may differ from our target by
    // decorations, and the header bar's own button maximises too.
    if (window_.isMaximized()) {
        window_.unmaximize(restoredFrame(screens, current));
        return;
    }
    const Rect target = maximiseTarget(screens, screens_.pointerPosition());
    if (current.width >= target.width && current.height >= target.height) {
        window_.setFrame(restoredFrame(screens, current));
    } else if (window_.windowManagerMaximizes()) {
        window_.maximize();
    } else {
        window_.setFrame(target);
    }
}

Rect MainWC::maximiseTarget(const std::vector<Screen>& screens, Point pointer) {
    for (const auto& screen : screens) {
        if (screen.frame.contains(pointer)) return screen.visibleFrame;
    }
    return kFallbackTarget;
}

Rect MainWC::restoredFrame(const std::vector<Screen>& screens, const Rect& window) {
    const Point centre{window.x + window.width / 2, window.y + window.height / 2};
    Rect area = screens.empty() ? kFallbackTarget : screens.front().visibleFrame;
    for (const auto& screen : screens) {
        if (screen.frame.contains(centre)) {
            area = screen.visibleFrame;
            break;
        }
    }
    return normalFrameCentredOn(area);
}

}  // namespace tunelark
