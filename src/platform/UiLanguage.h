#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

// The language of the program's own texts: "en" (the texts as written) or the name of one of the
// catalogues that ship ("zh_CN", "zh_TW", "ja"), which is also the page's catalogue name.
//
// The catalogue a locale name ("zh_HK.UTF-8", "ja_JP", "zh") reads in: Chinese of Hong Kong, Macao and
// Taiwan or with the Hant script reads Traditional, any other Chinese Simplified; nothing for languages
// without a catalogue and for "C"/"POSIX". "en" for English.
std::optional<std::string> uiLanguageForLocale(std::string_view locale);

// Chosen as gettext chooses: LANGUAGE, a colon-separated list whose first entry with a catalogue (or
// English) wins, unless the locale is explicitly "C" or "POSIX"; then the first set of LC_ALL,
// LC_MESSAGES and LANG. "en" when none names a language that has a catalogue. getenv is a parameter so
// tests can give their own environment.
std::string chooseUiLanguage(const std::function<const char*(const char*)>& getenv);

}  // namespace tunelark
