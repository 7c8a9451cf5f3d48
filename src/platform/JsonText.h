#pragma once
#include <nlohmann/json.hpp>

#include <string>

namespace tunelark {

// JSON text as the page and our tools take it: no whitespace, non-ASCII characters kept as they are,
// and bytes that are not UTF-8 replaced by U+FFFD instead of throwing.
template <typename Json>
std::string compactJson(const Json& value) {
    return value.dump(-1, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

}  // namespace tunelark
