#pragma once
#include <functional>
#include <string>

namespace tunelark {

// A long task's progress in the main window, outside the page: a short text, a sign of activity and a
// Cancel control. Main thread only.
class ProgressIndicator {
public:
    virtual ~ProgressIndicator() = default;
    // Shows the indicator, or changes its text when it is shown; Cancel calls onCancel, and without one
    // Cancel cannot be pressed.
    virtual void show(const std::string& text, std::function<void()> onCancel) = 0;
    virtual void hide() = 0;
};

}  // namespace tunelark
