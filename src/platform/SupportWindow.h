#pragma once
#include <string>

namespace tunelark {

// The words of the support window, chosen by the program.
struct SupportWindowContent {
    std::string title;
    std::string heading;
    std::string body;
    std::string closeButton;
};

// A small window that thanks the user. Main thread only.
class SupportWindow {
public:
    virtual ~SupportWindow() = default;
    // Visible and in front.
    virtual void show() = 0;
    // Gone from the screen; later calls do nothing.
    virtual void close() = 0;
};

}  // namespace tunelark
