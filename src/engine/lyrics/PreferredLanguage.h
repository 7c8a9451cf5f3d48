#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

// A POSIX locale name ("zh_CN.UTF-8", "sr_RS@latin") as a BCP 47 identifier ("zh-Hans-CN", "sr-Latn-RS");
// nothing for "C", "POSIX" and names without a language.
std::optional<std::string> languageTagForLocale(std::string_view locale);

// The user's first preferred language as a BCP 47 identifier ("zh-Hans-CN", "en-US"), derived from
// LANGUAGE (its first usable entry), LC_ALL, LC_MESSAGES and LANG in that order; "en" when none is set.
// getenv is a parameter so tests can give their own environment.
std::string firstPreferredLanguage(const std::function<const char*(const char*)>& getenv);
std::string firstPreferredLanguage();

}  // namespace tunelark
