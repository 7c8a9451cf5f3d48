#pragma once
#include <libintl.h>

#include <string>

namespace tunelark {

// User-visible texts are looked up with their English text as the key; no catalogues ship, so the
// English text comes back unless a translation is installed.
inline std::string localized(const char* english) { return dgettext("tunelark", english); }

}  // namespace tunelark
