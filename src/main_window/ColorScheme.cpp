#include "main_window/ColorScheme.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <utility>

namespace tunelark {

namespace {

constexpr unsigned kPortalDark = 1;
constexpr unsigned kPortalLight = 2;

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

// "Adwaita-dark", "Adwaita:dark" (GTK_THEME's variant), "HighContrastInverse".
bool darkThemeName(const std::string& name) {
    return name.ends_with("-dark") || name.ends_with(":dark") || name.ends_with("_dark") ||
           name.ends_with("inverse");
}

}  // namespace

ColorScheme chooseColorScheme(const DesktopAppearance& appearance) {
    if (appearance.portalColorScheme == kPortalDark) return ColorScheme::dark;
    if (appearance.portalColorScheme == kPortalLight) return ColorScheme::light;
    const std::string theme = lowered(appearance.toolkitThemeName);
    if (appearance.toolkitPrefersDark || darkThemeName(theme)) return ColorScheme::dark;
    if (!theme.empty() && theme != "adwaita") return ColorScheme::light;
    return ColorScheme::dark;
}

std::string readLightStyle(const PageFolder& folder) {
    const auto file = folder.resolve("/css/light.css");
    if (!file) return {};
    std::ifstream in(*file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

ColorSchemeFollower::ColorSchemeFollower(DesktopLook& desktop, PageView& page, std::string lightStyle)
    : desktop_(desktop), page_(page), lightStyle_(std::move(lightStyle)),
      scheme_(chooseColorScheme(desktop_.appearance())) {
    // Also when dark: the default theme's header bar is light, while the page's own look is dark.
    desktop_.setToolkitDark(scheme_ == ColorScheme::dark);
    if (scheme_ == ColorScheme::light) page_.setStyleOverride(lightStyle_);
    desktop_.setOnChanged([this] { apply(chooseColorScheme(desktop_.appearance())); });
}

ColorSchemeFollower::~ColorSchemeFollower() { desktop_.setOnChanged({}); }

void ColorSchemeFollower::apply(ColorScheme scheme) {
    if (scheme == scheme_) return;
    scheme_ = scheme;
    desktop_.setToolkitDark(scheme == ColorScheme::dark);
    page_.setStyleOverride(scheme == ColorScheme::light ? lightStyle_ : std::string());
}

}  // namespace tunelark
