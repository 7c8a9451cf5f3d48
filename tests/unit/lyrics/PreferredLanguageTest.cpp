#include "engine/lyrics/PreferredLanguage.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace tunelark {
namespace {

struct EnvironmentCase {
    const char* name;
    std::map<std::string, std::string> environment;
    const char* expected;
};

std::string languageIn(const std::map<std::string, std::string>& environment) {
    return firstPreferredLanguage([&](const char* variable) -> const char* {
        const auto found = environment.find(variable);
        return found == environment.end() ? nullptr : found->second.c_str();
    });
}

TEST(PreferredLanguageTest, ChineseRegionsGiveTheirScript) {
    const std::vector<EnvironmentCase> cases = {
        {"mainland China", {{"LANG", "zh_CN.UTF-8"}}, "zh-Hans-CN"},
        {"Singapore", {{"LANG", "zh_SG.UTF-8"}}, "zh-Hans-SG"},
        {"Taiwan", {{"LANG", "zh_TW.UTF-8"}}, "zh-Hant-TW"},
        {"Hong Kong", {{"LANG", "zh_HK.UTF-8"}}, "zh-Hant-HK"},
        {"legacy codeset", {{"LANG", "zh_CN.GB18030"}}, "zh-Hans-CN"},
        {"no region says nothing of the script", {{"LANG", "zh"}}, "zh"},
    };
    for (const EnvironmentCase& c : cases) EXPECT_EQ(languageIn(c.environment), c.expected) << c.name;
}

TEST(PreferredLanguageTest, VariablesAreConsultedInPrecedenceOrder) {
    const std::vector<EnvironmentCase> cases = {
        {"LANGUAGE first entry wins",
         {{"LANGUAGE", "zh_TW:zh_CN:en"}, {"LC_ALL", "de_DE.UTF-8"}, {"LANG", "fr_FR.UTF-8"}}, "zh-Hant-TW"},
        {"LC_ALL over LC_MESSAGES and LANG",
         {{"LC_ALL", "de_DE.UTF-8"}, {"LC_MESSAGES", "fr_FR.UTF-8"}, {"LANG", "en_GB.UTF-8"}}, "de-DE"},
        {"LC_MESSAGES over LANG", {{"LC_MESSAGES", "fr_FR.UTF-8"}, {"LANG", "en_GB.UTF-8"}}, "fr-FR"},
        {"LANG alone", {{"LANG", "en_US.UTF-8"}}, "en-US"},
        {"empty LANGUAGE is unset", {{"LANGUAGE", ""}, {"LANG", "zh_CN.UTF-8"}}, "zh-Hans-CN"},
        {"C locale is skipped", {{"LC_ALL", "C"}, {"LANG", "ja_JP.UTF-8"}}, "ja-JP"},
        {"C.UTF-8 is skipped", {{"LC_ALL", "C.UTF-8"}, {"LANG", "ko_KR.UTF-8"}}, "ko-KR"},
        {"POSIX is skipped", {{"LC_MESSAGES", "POSIX"}, {"LANG", "pt_BR.UTF-8"}}, "pt-BR"},
        {"unusable LANGUAGE entries are passed over", {{"LANGUAGE", ":C:zh_SG"}, {"LANG", "en_US"}}, "zh-Hans-SG"},
        {"nothing usable", {{"LC_ALL", "C"}, {"LANG", "POSIX"}}, "en"},
        {"empty environment", {}, "en"},
    };
    for (const EnvironmentCase& c : cases) EXPECT_EQ(languageIn(c.environment), c.expected) << c.name;
}

TEST(PreferredLanguageTest, LocaleNamesBecomeLanguageTags) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"en_US.UTF-8", "en-US"},
        {"de_DE@euro", "de-DE"},
        {"sr_RS@latin", "sr-Latn-RS"},
        {"uz_UZ.UTF-8@cyrillic", "uz-Cyrl-UZ"},
        {"es_419", "es-419"},
        {"EN_us", "en-US"},
        {"zh-TW", "zh-Hant-TW"},
        {"ast_ES.UTF-8", "ast-ES"},
        {"pt", "pt"},
    };
    for (const auto& [locale, tag] : cases) EXPECT_EQ(languageTagForLocale(locale), tag) << locale;
    for (const char* unusable : {"", "C", "POSIX", "C.UTF-8", "1234", "@latin", ".UTF-8", "x_US"}) {
        EXPECT_EQ(languageTagForLocale(unusable), std::nullopt) << '"' << unusable << '"';
    }
}

}  // namespace
}  // namespace tunelark
