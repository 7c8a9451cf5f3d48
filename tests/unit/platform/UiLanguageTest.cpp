#include "platform/UiLanguage.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace tunelark {
namespace {

std::string chosenWith(const std::map<std::string, std::string>& environment) {
    return chooseUiLanguage([&](const char* name) -> const char* {
        const auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    });
}

TEST(UiLanguage, LocaleNamesReadInTheirCatalogue) {
    EXPECT_EQ(uiLanguageForLocale("zh_CN.UTF-8"), "zh_CN");
    EXPECT_EQ(uiLanguageForLocale("zh_SG"), "zh_CN");
    EXPECT_EQ(uiLanguageForLocale("zh"), "zh_CN");
    EXPECT_EQ(uiLanguageForLocale("zh-Hans-HK"), "zh_CN");  // the script wins over the region
    EXPECT_EQ(uiLanguageForLocale("zh_TW.Big5"), "zh_TW");
    EXPECT_EQ(uiLanguageForLocale("zh_HK.UTF-8"), "zh_TW");
    EXPECT_EQ(uiLanguageForLocale("zh_MO"), "zh_TW");
    EXPECT_EQ(uiLanguageForLocale("zh-Hant"), "zh_TW");
    EXPECT_EQ(uiLanguageForLocale("ZH_tw"), "zh_TW");
    EXPECT_EQ(uiLanguageForLocale("ja_JP.eucJP"), "ja");
    EXPECT_EQ(uiLanguageForLocale("ja"), "ja");
    EXPECT_EQ(uiLanguageForLocale("en_GB.UTF-8@euro"), "en");
    for (const char* other : {"fr_FR.UTF-8", "ko_KR", "jav", "C", "POSIX", "C.UTF-8", "", "zhx_CN"}) {
        EXPECT_EQ(uiLanguageForLocale(other), std::nullopt) << other;
    }
}

TEST(UiLanguage, LanguageListComesFirstAndSkipsLanguagesWithoutCatalogue) {
    EXPECT_EQ(chosenWith({{"LANGUAGE", "zh_CN"}, {"LANG", "ja_JP.UTF-8"}}), "zh_CN");
    EXPECT_EQ(chosenWith({{"LANGUAGE", "fr:de:zh_TW:ja"}, {"LANG", "C.UTF-8"}}), "zh_TW");
    EXPECT_EQ(chosenWith({{"LANGUAGE", "::ja"}}), "ja");
    // English earlier in the list wins over a later catalogue.
    EXPECT_EQ(chosenWith({{"LANGUAGE", "en_US:zh_CN"}, {"LANG", "zh_CN.UTF-8"}}), "en");
    // A list with no language of ours leaves the choice to the locale.
    EXPECT_EQ(chosenWith({{"LANGUAGE", "fr:de"}, {"LANG", "ja_JP.UTF-8"}}), "ja");
    EXPECT_EQ(chosenWith({{"LANGUAGE", ""}, {"LANG", "zh_HK.UTF-8"}}), "zh_TW");
}

TEST(UiLanguage, LocaleVariablesInTheirOrder) {
    EXPECT_EQ(chosenWith({{"LC_ALL", "ja_JP.UTF-8"}, {"LC_MESSAGES", "zh_CN.UTF-8"}, {"LANG", "zh_TW.UTF-8"}}), "ja");
    EXPECT_EQ(chosenWith({{"LC_ALL", ""}, {"LC_MESSAGES", "zh_CN.UTF-8"}, {"LANG", "ja_JP.UTF-8"}}), "zh_CN");
    EXPECT_EQ(chosenWith({{"LANG", "zh_TW.UTF-8"}}), "zh_TW");
    // The first locale variable set decides, even when it names a language without a catalogue.
    EXPECT_EQ(chosenWith({{"LC_MESSAGES", "fr_FR.UTF-8"}, {"LANG", "ja_JP.UTF-8"}}), "en");
    EXPECT_EQ(chosenWith({}), "en");
}

TEST(UiLanguage, ThePlainLocaleKeepsTheTextsAsWritten) {
    EXPECT_EQ(chosenWith({{"LC_ALL", "C"}, {"LANGUAGE", "zh_CN"}, {"LANG", "ja_JP.UTF-8"}}), "en");
    EXPECT_EQ(chosenWith({{"LANG", "POSIX"}, {"LANGUAGE", "ja"}}), "en");
    // C.UTF-8 is what minimal systems set; LANGUAGE still chooses there, and with no locale set at all.
    EXPECT_EQ(chosenWith({{"LANG", "C.UTF-8"}, {"LANGUAGE", "ja"}}), "ja");
    EXPECT_EQ(chosenWith({{"LANGUAGE", "zh_CN"}}), "zh_CN");
}

}  // namespace
}  // namespace tunelark
