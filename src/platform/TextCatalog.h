#pragma once
#include <filesystem>
#include <string>

namespace tunelark {

// The gettext domain of both programs' texts.
inline constexpr const char* kTextDomain = "tunelark";

// Sets the process locale from the environment, chooses the language of the texts (chooseUiLanguage)
// and points gettext at the catalogues: <dir>/locale beside an executable in the build tree, else
// <dir>/../share/locale. Call once at the start of main, before any thread starts.
// wholeLocale: false sets only the messages' locale, for programs whose output must not follow the
// locale's number formats or character set.
void setUpTranslations(const std::filesystem::path& executable, bool wholeLocale = true);

// What setUpTranslations chose; "en" before it ran.
const std::string& uiLanguage();

}  // namespace tunelark
