#include "engine/lyrics/PreferredLanguage.h"

#include <gtest/gtest.h>

#include <map>

namespace tunelark {
namespace {

// The script decides the default lyric encoding, so the region must turn into it.
TEST(PreferredLanguageTest, VariablesInPrecedenceOrderGiveALanguageTag) {
    using Environment = std::map<std::string, std::string>;
    for (const auto& [variables, expected] : std::vector<std::pair<Environment, const char*>>{
             {{{"LANGUAGE", "zh_TW:zh_CN"}, {"LC_ALL", "de_DE.UTF-8"}, {"LANG", "fr_FR"}}, "zh-Hant-TW"},
             {{{"LANGUAGE", ""}, {"LC_ALL", "zh_SG.UTF-8"}, {"LC_MESSAGES", "fr_FR"}}, "zh-Hans-SG"},
             {{{"LC_MESSAGES", "zh_HK.UTF-8"}, {"LANG", "en_GB.UTF-8"}}, "zh-Hant-HK"},
             {{{"LANGUAGE", ":C:sr_RS@latin"}, {"LANG", "en_US"}}, "sr-Latn-RS"},
             {{{"LC_ALL", "C.UTF-8"}, {"LC_MESSAGES", "POSIX"}, {"LANG", "zh_CN.GB18030"}}, "zh-Hans-CN"},
             {{{"LC_ALL", "C"}, {"LANG", "@latin"}}, "en"}}) {
        const Environment& environment = variables;  // a lambda cannot capture a structured binding
        EXPECT_EQ(firstPreferredLanguage([&](const char* name) {
                      return environment.contains(name) ? environment.at(name).c_str() : nullptr;
                  }),
                  expected);
    }
    for (const auto& [locale, tag] : std::vector<std::pair<const char*, const char*>>{
             {"de_DE@euro", "de-DE"}, {"uz_UZ.UTF-8@cyrillic", "uz-Cyrl-UZ"}, {"es_419", "es-419"}, {"EN_us", "en-US"},
             {"zh-TW", "zh-Hant-TW"}, {"zh", "zh"}, {"ast_ES", "ast-ES"}}) {
        EXPECT_EQ(languageTagForLocale(locale), tag) << locale;
    }
    for (const char* unusable : {"", "1234", ".UTF-8", "x_US"}) EXPECT_EQ(languageTagForLocale(unusable), std::nullopt);
}

}  // namespace
}  // namespace tunelark
