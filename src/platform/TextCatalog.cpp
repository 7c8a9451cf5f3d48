#include "platform/TextCatalog.h"

#include "platform/UiLanguage.h"

#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace tunelark {
namespace {

std::string& chosenLanguage() {
    static std::string language = "en";
    return language;
}

std::filesystem::path catalogueFolder(const std::filesystem::path& executable) {
    const auto dir = executable.parent_path();
    std::error_code error;
    if (std::filesystem::is_directory(dir / "locale", error)) return dir / "locale";
    return (dir / ".." / "share" / "locale").lexically_normal();
}

bool isPlainLocale(const char* name) {
    return name == nullptr || std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0;
}

}  // namespace

void setUpTranslations(const std::filesystem::path& executable, bool wholeLocale) {
    if (wholeLocale) {
        std::setlocale(LC_ALL, "");
    } else {
        std::setlocale(LC_MESSAGES, "");
    }
    const std::string language = chooseUiLanguage([](const char* name) { return std::getenv(name); });
    chosenLanguage() = language;
    if (language != "en") {
        // gettext reads the catalogue named by LANGUAGE, but ignores LANGUAGE in the "C" locale, which is
        // what a machine without the user's locale generated falls back to.
        setenv("LANGUAGE", language.c_str(), 1);
        if (isPlainLocale(std::setlocale(LC_MESSAGES, nullptr))) std::setlocale(LC_MESSAGES, "C.UTF-8");
    }
    bindtextdomain(kTextDomain, catalogueFolder(executable).c_str());
    // The texts go to GTK and to UTF-8 terminals, whatever the locale's own character set.
    bind_textdomain_codeset(kTextDomain, "UTF-8");
}

const std::string& uiLanguage() { return chosenLanguage(); }

}  // namespace tunelark
