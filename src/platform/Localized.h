#pragma once
#include "platform/TextCatalog.h"

#include <libintl.h>

#include <string>

namespace tunelark {

// User-visible texts are looked up with their English text as the key in the catalogue of the language
// setUpTranslations chose; English, and any text without a translation, comes back as written.
inline std::string localized(const char* english) {
    return uiLanguage() == "en" ? english : dgettext(kTextDomain, english);
}

// Marks a text kept in a constant for the catalogue; localized() translates it where it is shown.
constexpr const char* catalogued(const char* english) { return english; }

}  // namespace tunelark
