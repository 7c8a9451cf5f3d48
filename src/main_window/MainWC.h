#pragma once
#include "library/PlayList.h"
#include "page/PageState.h"
#include "platform/MainWindow.h"

#include <functional>
#include <string>

namespace tunelark {

// The main window controller: its first showing for the page, closing, showing, dragging and the
// maximise/restore toggle.
// Main thread only.
class MainWC {
public:
    // Ends the process with the given status; tests pass a recorder.
    using ExitProcess = std::function<void(int status)>;

    // The newest controller; set on creation, never cleared.
    static inline MainWC* shared = nullptr;

    // Used as the maximise target when the pointer is on no screen.
    static constexpr Rect kFallbackTarget{0, 0, 1024, 768};

    MainWC(MainWindow& window, const Screens& screens, PageState& page, PlayList& playList, ExitProcess exitProcess);
    MainWC(const MainWC&) = delete;
    MainWC& operator=(const MainWC&) = delete;

    MainWindow& window() { return window_; }

    // The user closes the main window: it leaves the screen and the process ends with status 0. The
    // usual quit sequence (save, quit dialog) does not run.
    void windowShouldClose();
    // The page is ready: the first time (the window still unsized), places the window at 1200 by 600 on
    // the main screen, shows it and starts the exchange with the page. Later calls do nothing, except the
    // first one after pageProcessEnded: that page is a reloaded one and gets the native state again (the
    // window stays as it is).
    void showWindowForPage();
    // The page's process ended and the web view reloads the page; its next showWindow restores it.
    void pageProcessEnded(const std::string& reason);
    // Brings the main window forward; before the page has asked for its first showing the window has
    // no size yet, so it stays hidden.
    void showWindow();
    // Starts a window-manager drag from the last press in the web view; nothing without one.
    void startMoveWindow();
    // Maximises onto the visible frame of the screen under the pointer (through the window manager
    // when there is one), or, when the window is maximised or already covers that frame, restores the
    // normal size centred on the visible frame of the screen that holds the window.
    void changeMaxMin();

    // The maximise target for a pointer position: the visible frame of the first screen whose frame
    // holds it, else kFallbackTarget.
    static Rect maximiseTarget(const std::vector<Screen>& screens, Point pointer);
    // The normal frame centred on the visible frame of the screen that holds the centre of `window`,
    // else of the main screen, else of kFallbackTarget.
    static Rect restoredFrame(const std::vector<Screen>& screens, const Rect& window);

private:
    MainWindow& window_;
    const Screens& screens_;
    PageState& page_;
    PlayList& playList_;
    ExitProcess exitProcess_;
    bool pageLost_ = false;
};

}  // namespace tunelark
