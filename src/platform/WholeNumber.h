#pragma once
#include <optional>
#include <string_view>

namespace tunelark {

// A whole text read as strtod reads a number in the "C" locale: no leading blank, nothing left over.
// Hexadecimal, infinity and NaN forms read as strtod reads them; callers that refuse them say so.
std::optional<double> parseWholeNumber(std::string_view text);
// The same reading limited to finite decimal numbers: no hexadecimal form, no infinity or NaN.
std::optional<double> parseFiniteDecimal(std::string_view text);

}  // namespace tunelark
