#pragma once
#include "main_window/PageFolder.h"
#include "platform/DesktopLook.h"
#include "platform/PageView.h"

#include <string>

namespace tunelark {

enum class ColorScheme { dark, light };

// The portal's answer wins; without one, a dark theme or the user's dark preference gives dark, and a
// theme the user chose that is not dark gives light. GTK's built-in default theme says nothing, and
// with nothing said the page keeps its own dark look.
ColorScheme chooseColorScheme(const DesktopAppearance& appearance);

// The page's light palette (css/light.css in its folder); empty when it cannot be read.
std::string readLightStyle(const PageFolder& folder);

// Keeps the toolkit's windows and the page in the scheme the desktop asks for, switching live. The
// page gets the light palette as a style sheet over its own, so a reloaded page keeps it too.
class ColorSchemeFollower {
public:
    ColorSchemeFollower(DesktopLook& desktop, PageView& page, std::string lightStyle);
    ~ColorSchemeFollower();
    ColorSchemeFollower(const ColorSchemeFollower&) = delete;
    ColorSchemeFollower& operator=(const ColorSchemeFollower&) = delete;

    ColorScheme scheme() const { return scheme_; }

private:
    void apply(ColorScheme scheme);

    DesktopLook& desktop_;
    PageView& page_;
    std::string lightStyle_;
    ColorScheme scheme_ = ColorScheme::dark;
};

}  // namespace tunelark
