#pragma once
#include "platform/LyricsWindow.h"

#include <algorithm>
#include <string>

namespace tunelark::test {

// A lyrics window that records what is shown and measures text by a simple rule: each character is
// half the font size wide, each line 1.25 font sizes high, plus a fixed padding. Tests fire the
// pointer and window events through `events` and `delegate`.
class FakeLyricsWindow : public LyricsWindow {
public:
    static constexpr double kPadding = 4;

    explicit FakeLyricsWindow(Rect initialFrame) : currentFrame(initialFrame) {}

    void setTextEvents(LyricsTextEvents* sink) override { events = sink; }
    void setDelegate(LyricsWindowDelegate* sink) override { delegate = sink; }

    Rect frame() const override { return currentFrame; }
    void setFrame(const Rect& frame) override {
        currentFrame = frame;
        ++frameSets;
    }
    void show() override {
        visible = true;
        ++showCount;
    }
    void orderOut() override {
        visible = false;
        ++orderOutCount;
    }
    bool isVisible() const override { return visible; }

    void setText(const std::string& value) override { text = value; }
    void setFontSize(double points) override { fontSize = points; }
    void setTextColor(const Rgba& color) override { textColor = color; }
    void setTextBackground(const Rgba& color) override { background = color; }
    LabelSize naturalTextSize() override {
        std::size_t lines = 1, longest = 0, current = 0;
        for (char c : text) {
            if (c == '\n') {
                ++lines;
                current = 0;
            } else {
                longest = std::max(longest, ++current);
            }
        }
        return {double(longest) * fontSize / 2 + kPadding, double(lines) * fontSize * 1.25 + kPadding};
    }

    LyricsTextEvents* events = nullptr;
    LyricsWindowDelegate* delegate = nullptr;
    Rect currentFrame;
    int frameSets = 0;
    bool visible = false;
    int showCount = 0;
    int orderOutCount = 0;
    std::string text;
    double fontSize = 13;  // the label's font before the first text
    Rgba textColor{0, 0, 0, 1};
    Rgba background{1, 1, 1, 1};
};

}  // namespace tunelark::test
