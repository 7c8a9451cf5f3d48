#pragma once
#include <functional>
#include <string>

namespace tunelark {

// What the page's messages ask native code to do: one seam per operation, filled by the program at
// start-up. The handlers call them on the main thread with values already read from the message body;
// an empty member does nothing.
struct BridgeOperations {
    std::function<void()> showWindow;       // first time: size and show the main window, send the data
    std::function<void()> startMoveWindow;  // drag the main window with the last button press
    std::function<void(const std::string& text)> doCopy;
    std::function<void(const std::string& msg)> alert;
    std::function<void()> changeMaxMin;
    std::function<void()> toAddMp3;
    std::function<void()> clearPlayList;
    std::function<void(const std::string& mainPathFileName, const std::string& charset)> setCharset;
    // Play-list positions 1..32767 (the page's 0-based indexes plus 1).
    std::function<void(int fromNo, int toNo)> moveItem;
    std::function<void(const std::string& filePath)> remove;
    std::function<void()> play;
    std::function<void(const std::string& filePath)> playItem;
    std::function<void()> pause;
    std::function<void()> changeMode;
    std::function<void()> playNext;
    std::function<void()> playPrev;
    // Ten-thousandths of the duration, as the page sent them (a finite number, not clamped).
    std::function<void(double currentPercent)> setCurrentPercent;
    // The texts as sent: "true"/"false" and "oneRow"/"towRows"; other values are the operation's to ignore.
    std::function<void(const std::string& needOn, const std::string& rowAmoutString)> turnLyricsOn;
    std::function<void(const std::string& rowAmoutString)> setRowMode;
    std::function<void()> playNextLyric;
    std::function<void()> playPrevLyric;
    std::function<void()> speedUp;
    std::function<void()> speedDown;
};

}  // namespace tunelark
