#include "main_window/MainWC.h"

#include "main_window/MainWindowFrame.h"
#include "platform/Console.h"

#include <utility>

namespace tunelark {

namespace {

Rect centredOnMainScreen(const Screens& screens) {
    const auto all = screens.all();
    if (all.empty()) return Rect{0, 0, kMainWindowWidth, kMainWindowHeight};
    return normalFrameCentredIn(all.front().frame);
}

}  // namespace

MainWC::MainWC(MainWindow& window, const Screens& screens, PageState& page, PlayList& playList,
               ExitProcess exitProcess)
    : window_(window), screens_(screens), page_(page), playList_(playList), exitProcess_(std::move(exitProcess)) {
    shared = this;
}

void MainWC::showWindowForPage() {
    if (window_.frame().width >= kMainWindowSizedWidth) {  // sized by an earlier showWindow
        if (std::exchange(pageLost_, false)) playList_.restorePage();
        return;
    }
    pageLost_ = false;  // this page gets everything anyway
    consoleLine("isVisible == false");
    page_.loaded = true;
    window_.setFrame(centredOnMainScreen(screens_));
    window_.setMinimumSize(kMainWindowWidth, kMainWindowHeight);
    // The window stays unmapped until now, so showing it belongs to its first sizing.
    window_.show();
    playList_.startExchange();
}

void MainWC::pageProcessEnded(const std::string& reason) {
    consoleLine("Page process ended: " + reason + "; reloading the page");
    pageLost_ = true;
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
