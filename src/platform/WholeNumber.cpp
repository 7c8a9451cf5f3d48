#include "platform/WholeNumber.h"

#include <cmath>
#include <cstdlib>
#include <locale.h>
#include <string>

namespace tunelark {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

// The "C" locale, made once: stored and sent numbers use "." whatever the user's locale says.
locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return locale;
}

}  // namespace

std::optional<double> parseWholeNumber(std::string_view text) {
    if (text.empty() || isBlank(text.front())) return std::nullopt;
    const std::string copy(text);  // strtod needs a terminated text
    char* end = nullptr;
    const locale_t locale = cLocale();
    const double value = locale ? strtod_l(copy.c_str(), &end, locale) : std::strtod(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size()) return std::nullopt;
    return value;
}

std::optional<double> parseFiniteDecimal(std::string_view text) {
    // Only the hexadecimal form has an x; infinity and NaN are refused by their value.
    if (text.find_first_of("xX") != std::string_view::npos) return std::nullopt;
    const auto value = parseWholeNumber(text);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    return value;
}

}  // namespace tunelark
