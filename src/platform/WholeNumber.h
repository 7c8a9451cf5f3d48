#pragma once
#include <optional>
#include <string_view>

namespace tunelark {

// A whole text read as strtod reads a number in the "C" locale: no leading blank, nothing left over.
// Hexadecimal, infinity and NaN forms read as strtod reads them; callers that refuse them say so.
std::optional<double> parseWholeNumber(std::string_view text);

}  // namespace tunelark
