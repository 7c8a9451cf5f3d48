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
    const Rect target = maximiseTarget(screens, screens_.pointerPosition());
    const Rect current = window_.frame();
    if (current.width < target.width || current.height < target.height) {
        window_.setFrame(target);
    } else {
        window_.setFrame(restoredFrame(screens));
    }
}

Rect MainWC::maximiseTarget(const std::vector<Screen>& screens, Point pointer) {
    for (const auto& screen : screens) {
        if (screen.frame.contains(pointer)) return screen.visibleFrame;
    }
    return kFallbackTarget;
}

Rect MainWC::restoredFrame(const std::vector<Screen>& screens) {
    // Without any monitor, centre on the fallback area rather than on nothing.
    return normalFrameCentredIn(screens.empty() ? kFallbackTarget : screens.front().frame);
}

}  // namespace tunelark
