#include "main_window/ColorScheme.h"

#include "TempDir.h"
#include "fakes/FakeDesktopLook.h"
#include "fakes/FakePageView.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using test::FakeDesktopLook;
using test::FakePageView;
constexpr auto dark = ColorScheme::dark;
constexpr auto light = ColorScheme::light;

DesktopAppearance portal(std::optional<unsigned> scheme, std::string theme = "Adwaita", bool prefersDark = false) {
    return DesktopAppearance{scheme, prefersDark, std::move(theme)};
}

// The portal's answer wins; without one the toolkit's theme decides; with nothing said, the page's own dark.
TEST(ChooseColorScheme, ThePortalThenTheToolkitThenThePagesOwnDarkLook) {
    struct Case {
        std::optional<unsigned> portal;
        const char* theme;
        bool prefersDark;
        ColorScheme expected;
    };
    for (const Case& c : std::vector<Case>{
             {1, "Clearlooks", false, dark},
             {2, "Adwaita-dark", true, light},
             {2, "Adwaita", false, light},
             {std::nullopt, "Adwaita-dark", false, dark},
             {0, "Adwaita:dark", false, dark},  // GTK_THEME's variant
             {std::nullopt, "HighContrastInverse", false, dark},
             {std::nullopt, "Clearlooks", true, dark},  // the user's own dark preference
             {std::nullopt, "Clearlooks", false, light},
             {0, "HighContrast", false, light},
             {7, "Raleigh", false, light},  // a value the portal does not define counts as none
             {std::nullopt, "Adwaita", false, dark},
             {0, "adwaita", false, dark},
             {std::nullopt, "", false, dark},
         }) {
        EXPECT_EQ(chooseColorScheme(portal(c.portal, c.theme, c.prefersDark)), c.expected)
            << c.theme << " portal " << c.portal.value_or(99);
    }
}

class ColorSchemeFollowerTest : public ::testing::Test {
protected:
    FakeDesktopLook desktop;
    FakePageView page;
    const std::string lightStyle = "html:root { --bg: #fff; }";
};

TEST_F(ColorSchemeFollowerTest, TheSchemeAtStartSetsTheWindowsAndOnlyALightOneGivesThePageItsPalette) {
    desktop.current = portal(1);
    EXPECT_EQ(ColorSchemeFollower(desktop, page, lightStyle).scheme(), dark);
    EXPECT_TRUE(page.styleOverrides.empty());
    desktop.current = portal(2);
    EXPECT_EQ(ColorSchemeFollower(desktop, page, lightStyle).scheme(), light);
    EXPECT_EQ(desktop.toolkitDark, (std::vector<bool>{true, false}));
    EXPECT_EQ(page.styleOverrides, std::vector<std::string>{lightStyle});
}

TEST_F(ColorSchemeFollowerTest, SwitchesLiveBothWaysAndOnlyOnAChange) {
    ColorSchemeFollower follower(desktop, page, lightStyle);
    desktop.toolkitDark.clear();
    desktop.change(portal(2));
    desktop.change(portal(2, "Clearlooks"));  // still light: nothing to redo
    EXPECT_EQ(follower.scheme(), light);
    desktop.change(portal(1));
    EXPECT_EQ(follower.scheme(), dark);
    EXPECT_EQ(desktop.toolkitDark, (std::vector<bool>{false, true}));
    EXPECT_EQ(page.styleOverrides, (std::vector<std::string>{lightStyle, ""}));
}

TEST_F(ColorSchemeFollowerTest, StopsListeningWhenDestroyed) {
    { ColorSchemeFollower follower(desktop, page, lightStyle); }
    EXPECT_FALSE(desktop.listened());
    desktop.change(portal(2));
    EXPECT_TRUE(page.styleOverrides.empty());
}

TEST(ReadLightStyle, ReadsTheLightPaletteFromThePageFolderOrGivesNothing) {
    test::TempDir dir;
    EXPECT_EQ(readLightStyle(PageFolder(dir.path)), "");
    std::filesystem::create_directories(dir.file("css"));
    test::writeAll(dir.file("css/light.css"), "html:root{}\n");
    EXPECT_EQ(readLightStyle(PageFolder(dir.path)), "html:root{}\n");
}

}  // namespace
}  // namespace tunelark
