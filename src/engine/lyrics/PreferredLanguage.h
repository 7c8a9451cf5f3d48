#pragma once
#include <functional>
#include <string>

namespace tunelark {

// The user's first preferred language as a BCP 47 identifier ("zh-Hans-CN", "en-US"), derived from
// LANGUAGE, LC_ALL, LC_MESSAGES and LANG in that order; "en" when none is set.
// getenv is a parameter so tests can give their own environment.
std::string firstPreferredLanguage(const std::function<const char*(const char*)>& getenv);
std::string firstPreferredLanguage();

}  // namespace tunelark
