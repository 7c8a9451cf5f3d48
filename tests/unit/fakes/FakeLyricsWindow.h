#pragma once
#include "platform/LyricsWindow.h"

#include <algorithm>
#include <string>

namespace tunelark::test {

// Records what is shown; text measures half the font size per character and 1.25 font sizes per line,
// plus padding. Tests fire events through `events` and `delegate`.
class FakeLyricsWindow : public LyricsWindow {
public:
    explicit FakeLyricsWindow(Rect initialFrame) : currentFrame(initialFrame) {}
    void setTextEvents(LyricsTextEvents* sink) override { events = sink; }
    void setDelegate(LyricsWindowDelegate* sink) override { delegate = sink; }
    Rect frame() const override { return currentFrame; }
    void setFrame(const Rect& frame) override { currentFrame = frame; }
    void show() override { visible = true; }
    void hide() override { visible = false; }
    bool isVisible() const override { return visible; }
    void setText(const std::string& value) override { text = value; }
    void setFontSize(double points) override { fontSize = points; }
    void setTextColor(const Rgba& color) override { textColor = color; }
    void setTextBackground(const Rgba& color) override { background = color; }
    LabelSize naturalTextSize() override {
        std::size_t lines = 1, longest = 0, current = 0;
        for (char c : text) {
            if (c == '\n') ++lines, current = 0;
            else longest = std::max(longest, ++current);
        }
        return {double(longest) * fontSize / 2 + 4, double(lines) * fontSize * 1.25 + 4};
    }

    LyricsTextEvents* events = nullptr;
    LyricsWindowDelegate* delegate = nullptr;
    Rect currentFrame;
    bool visible = false;
    std::string text;
    double fontSize = 13;  // the label's font before the first text
    Rgba textColor{0, 0, 0, 1}, background{1, 1, 1, 1};
};

}  // namespace tunelark::test
