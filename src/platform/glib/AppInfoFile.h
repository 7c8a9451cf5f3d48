#pragma once
#include <string>
#include <vector>

namespace tunelark {

// The URL schemes that page links may open in other applications, from the app info key file
// ([Application] LSApplicationQueriesSchemes=a;b;). Empty when the file or the key is missing or the
// file does not parse; the reason is logged.
std::vector<std::string> readQueriesSchemes(const std::string& appInfoPath);

}  // namespace tunelark
