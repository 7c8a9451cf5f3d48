#pragma once
#include "platform/MainWindow.h"

#include <vector>

namespace tunelark::test {

// Records what was asked of it; like the real one, reports a zero frame until first shown.
class FakeMainWindow : public MainWindow {
public:
    Rect frame() const override { return everShown ? currentFrame : Rect{}; }
    void setFrame(const Rect& frame) override { currentFrame = frame, frames.push_back(frame); }
    void setMinimumSize(double width, double height) override { minimumSize = Rect{0, 0, width, height}; }
    bool isVisible() const override { return visible; }
    void show() override { everShown = visible = true, ++showCount; }
    void hide() override { visible = false, ++hideCount; }
    bool beginDragFromLastPress() override {
        if (hasLastPress) ++dragsStarted;
        return hasLastPress;
    }
    bool windowManagerMaximizes() const override { return windowManager; }
    bool isMaximized() const override { return maximized; }
    // Requests only: as with a real window manager, the state changes when the test says it reported back.
    void maximize() override { ++maximizeRequests; }
    void unmaximize(const Rect& restored) override { unmaximizedTo.push_back(restored); }

    Rect currentFrame;
    std::vector<Rect> frames;  // every setFrame, in order
    Rect minimumSize;
    bool everShown = false, visible = false;
    bool hasLastPress = false;  // whether the web view has recorded a button press
    int showCount = 0, hideCount = 0, dragsStarted = 0;
    bool windowManager = false;  // whether maximise requests are carried out
    bool maximized = false;      // as the window manager reports it
    int maximizeRequests = 0;
    std::vector<Rect> unmaximizedTo;  // the restored frame of every unmaximise request
};

class FakeScreens : public Screens {
public:
    std::vector<Screen> all() const override { return screens; }
    Point pointerPosition() const override { return pointer; }
    std::vector<Screen> screens;  // the first is the main screen
    Point pointer;
};

}  // namespace tunelark::test
