#include "platform/UiLanguage.h"

#include <array>

namespace tunelark {
namespace {

std::string_view valueOf(const std::function<const char*(const char*)>& getenv, const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? std::string_view{} : std::string_view(value);
}

std::string lowered(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

}  // namespace

std::optional<std::string> uiLanguageForLocale(std::string_view locale) {
    locale = locale.substr(0, locale.find_first_of(".@"));  // codeset and modifier do not pick the language
    const auto separator = locale.find_first_of("_-");
    const std::string language = lowered(locale.substr(0, separator));
    // What follows the language: a region ("TW"), or a script and maybe a region ("Hant-HK").
    const std::string rest =
        separator == std::string_view::npos ? std::string{} : lowered(locale.substr(separator + 1));
    if (language == "en") return "en";
    if (language == "ja") return "ja";
    if (language == "zh") {
        const bool traditional = rest.starts_with("hant") || rest == "tw" || rest == "hk" || rest == "mo";
        const bool simplified = rest.starts_with("hans");
        return traditional && !simplified ? "zh_TW" : "zh_CN";
    }
    return std::nullopt;
}

std::string chooseUiLanguage(const std::function<const char*(const char*)>& getenv) {
    std::string_view locale;
    for (const char* name : std::array{"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = valueOf(getenv, name);
        if (!locale.empty()) break;
    }
    // Scripts say LC_ALL=C to get the texts as written, whatever LANGUAGE the user keeps.
    if (locale != "C" && locale != "POSIX") {
        std::string_view entries = valueOf(getenv, "LANGUAGE");
        while (!entries.empty()) {
            const auto colon = entries.find(':');
            if (auto language = uiLanguageForLocale(entries.substr(0, colon))) return *language;
            if (colon == std::string_view::npos) break;
            entries.remove_prefix(colon + 1);
        }
    }
    return uiLanguageForLocale(locale).value_or("en");
}

}  // namespace tunelark
