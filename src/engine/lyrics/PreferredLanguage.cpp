#include "engine/lyrics/PreferredLanguage.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace tunelark {
namespace {

bool isAsciiAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

bool allOf(std::string_view text, bool (*test)(char)) {
    return std::all_of(text.begin(), text.end(), test);
}

std::string lowered(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

std::string uppered(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return out;
}

// Chinese locales name a region, not a script; the script is what decides Simplified or Traditional.
std::string_view scriptFor(std::string_view language, std::string_view region, std::string_view modifier) {
    if (language == "zh") {
        if (region == "CN" || region == "SG") return "Hans";
        if (region == "TW" || region == "HK" || region == "MO") return "Hant";
    }
    if (modifier == "latin") return "Latn";
    if (modifier == "cyrillic") return "Cyrl";
    if (modifier == "devanagari") return "Deva";
    return {};
}

}  // namespace

std::optional<std::string> languageTagForLocale(std::string_view locale) {
    std::string_view modifier;
    if (const auto at = locale.find('@'); at != std::string_view::npos) {
        modifier = locale.substr(at + 1);
        locale = locale.substr(0, at);
    }
    locale = locale.substr(0, locale.find('.'));  // the codeset says nothing about the language
    const auto separator = locale.find_first_of("_-");
    const std::string_view languagePart = locale.substr(0, separator);
    const std::string_view regionPart =
        separator == std::string_view::npos ? std::string_view{} : locale.substr(separator + 1);

    // "C" and "POSIX" fail here: a language subtag has two or three letters.
    if (languagePart.size() < 2 || languagePart.size() > 3 || !allOf(languagePart, isAsciiAlpha)) {
        return std::nullopt;
    }
    const std::string language = lowered(languagePart);
    std::string region;
    if ((regionPart.size() == 2 && allOf(regionPart, isAsciiAlpha)) ||
        (regionPart.size() == 3 && allOf(regionPart, isAsciiDigit))) {
        region = uppered(regionPart);
    }

    std::string tag = language;
    if (const std::string_view script = scriptFor(language, region, modifier); !script.empty()) {
        tag.append("-").append(script);
    }
    if (!region.empty()) tag.append("-").append(region);
    return tag;
}

std::string firstPreferredLanguage(const std::function<const char*(const char*)>& getenv) {
    static constexpr std::array kVariables{"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
    for (const char* variable : kVariables) {
        const char* value = getenv(variable);
        if (value == nullptr) continue;
        std::string_view entries(value);
        // LANGUAGE is a colon-separated list in order of preference; the others hold one locale.
        while (!entries.empty()) {
            const auto colon = entries.find(':');
            if (auto tag = languageTagForLocale(entries.substr(0, colon))) return *tag;
            if (colon == std::string_view::npos) break;
            entries.remove_prefix(colon + 1);
        }
    }
    return "en";
}

std::string firstPreferredLanguage() {
    return firstPreferredLanguage([](const char* name) { return std::getenv(name); });
}

}  // namespace tunelark
