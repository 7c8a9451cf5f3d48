#pragma once
#include "platform/MainWindow.h"

#include <vector>

namespace tunelark::test {

// A main window that records what was asked of it. Like the real one, it reports a zero frame until
// it is first shown.
class FakeMainWindow : public MainWindow {
public:
    Rect frame() const override { return everShown ? currentFrame : Rect{}; }
    void setFrame(const Rect& frame) override {
        currentFrame = frame;
        frames.push_back(frame);
    }
    void setMinimumSize(double width, double height) override { minimumSize = Rect{0, 0, width, height}; }
    bool isVisible() const override { return visible; }
    void show() override {
        everShown = true;
        visible = true;
        ++showCount;
    }
    void hide() override {
        visible = false;
        ++hideCount;
    }
    bool beginDragFromLastPress() override {
        ++dragRequests;
        if (!hasLastPress) return false;
        ++dragsStarted;
        return true;
    }

    Rect currentFrame;           // what frame() reports once shown
    std::vector<Rect> frames;    // every setFrame, in order
    Rect minimumSize;            // width and height of the last setMinimumSize
    bool everShown = false;
    bool visible = false;
    bool hasLastPress = false;   // whether the web view has recorded a button press
    int showCount = 0;
    int hideCount = 0;
    int dragRequests = 0;
    int dragsStarted = 0;
};

// Monitors and a pointer the test places.
class FakeScreens : public Screens {
public:
    std::vector<Screen> all() const override { return screens; }
    Point pointerPosition() const override { return pointer; }

    std::vector<Screen> screens;  // the first is the main screen
    Point pointer;
};

}  // namespace tunelark::test
