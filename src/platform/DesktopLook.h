#pragma once
#include <functional>
#include <optional>
#include <string>

namespace tunelark {

// What the desktop says about light and dark, as read; which look follows from it is decided above.
struct DesktopAppearance {
    // The settings portal's org.freedesktop.appearance color-scheme (0 no preference, 1 dark, 2 light),
    // or nothing when there is no portal or it does not know the key.
    std::optional<unsigned> portalColorScheme;
    bool toolkitPrefersDark = false;  // the user's own gtk-application-prefer-dark-theme
    std::string toolkitThemeName;     // GTK_THEME when set, else gtk-theme-name
};

// The desktop's appearance settings and the toolkit's dark variant. Main thread only.
class DesktopLook {
public:
    virtual ~DesktopLook() = default;
    virtual DesktopAppearance appearance() const = 0;
    // Called on the main thread whenever appearance() may have changed (also once the portal's first
    // answer has come).
    virtual void setOnChanged(std::function<void()> onChanged) = 0;
    // The toolkit's windows (header bars, dialogs) in the theme's dark or light variant.
    virtual void setToolkitDark(bool dark) = 0;
};

}  // namespace tunelark
