#pragma once
#include "library/store/Store.h"
#include "page/PageState.h"
#include "platform/LyricsWindow.h"

#include <functional>
#include <memory>
#include <string>

namespace tunelark {

// What the page does to the lyrics window: turn it on or off and choose one or two rows. The window
// and its controllers are made on the first "true" and kept until quit. Main thread only.
class LyricsWindowSwitch {
public:
    using WindowFactory = std::function<std::unique_ptr<LyricsWindow>()>;

    LyricsWindowSwitch(WindowFactory makeWindow, Store& store, PageState& page, std::function<void()> showMainWindow);
    ~LyricsWindowSwitch();
    LyricsWindowSwitch(const LyricsWindowSwitch&) = delete;
    LyricsWindowSwitch& operator=(const LyricsWindowSwitch&) = delete;

    // needOn "true" shows (making the window the first time), "false" hides, anything else neither;
    // then the row mode as setRowMode. Values are exact texts, case included.
    void turnLyricsOn(const std::string& needOn, const std::string& rowAmoutString);
    // "oneRow" is one row, "towRows" two; anything else leaves the row mode.
    void setRowMode(const std::string& rowAmoutString);
    // Whether the lyrics window is on screen: what the page's switch shows.
    bool isShown() const;

private:
    struct Scene;
    void makeLyricsWindow();

    WindowFactory makeWindow_;
    Store& store_;
    PageState& page_;
    std::function<void()> showMainWindow_;
    std::unique_ptr<Scene> scene_;
};

}  // namespace tunelark
