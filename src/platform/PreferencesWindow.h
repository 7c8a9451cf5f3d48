#pragma once
#include "platform/LyricsWindow.h"

#include <functional>
#include <string>

namespace tunelark {

enum class SizeField { OneRow, TwoRows };

// The controls of the preferences window. Called on the main thread from the event loop, never from
// inside a PreferencesWindow call (setting a control from code sends nothing).
class PreferencesActions {
public:
    virtual ~PreferencesActions() = default;
    virtual void clickOneRowDefault() = 0;
    virtual void clickOneRowReset() = 0;
    virtual void clickTwoRowDefault() = 0;
    virtual void clickTwoRowsReset() = 0;
    virtual void clickColorReset() = 0;
    virtual void clickColorDefault() = 0;
    // The user toggled the check box; its new state.
    virtual void clickedKeepBackgroundColor(bool on) = 0;
    virtual void clickConfirm() = 0;
    virtual void clickCancel() = 0;
};

class PreferencesWindowDelegate {
public:
    virtual ~PreferencesWindowDelegate() = default;
    // Runs once when the window closes, by close() or by the user, while its controls still answer.
    virtual void windowWillClose() = 0;
};

// The preferences window: two size fields, a colour well with its colour panel, a check box, eight
// buttons. Main thread only. After it has closed every call does nothing and getters answer empty.
class PreferencesWindow {
public:
    // Whether a field may take the text that an edit would leave in it; a refused edit leaves the field
    // as it was.
    using InputFilter = std::function<bool(const std::string& proposedText)>;

    virtual ~PreferencesWindow() = default;

    virtual void setActions(PreferencesActions* actions) = 0;
    virtual void setDelegate(PreferencesWindowDelegate* delegate) = 0;

    virtual std::string fieldText(SizeField field) const = 0;
    // Bypasses the filter.
    virtual void setFieldText(SizeField field, const std::string& text) = 0;
    virtual void setInputFilter(SizeField field, InputFilter filter) = 0;

    // The well's colour, opaque sRGB; it follows the colour panel while the user picks.
    virtual Rgba colorWellColor() const = 0;
    virtual void setColorWellColor(const Rgba& color) = 0;
    // Closes the colour panel and ends the well's link with it.
    virtual void deactivateColorWell() = 0;

    virtual bool checkBoxOn() const = 0;
    virtual void setCheckBoxOn(bool on) = 0;

    // Visible and in front.
    virtual void show() = 0;
    // The delegate's windowWillClose runs first, then the window is gone.
    virtual void close() = 0;
};

}  // namespace tunelark
