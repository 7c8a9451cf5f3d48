#pragma once
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>

namespace tunelark::fuzz {

// A broken promise is a crash for libFuzzer: it keeps the input and stops.
inline void require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

// Judged by the JSON library's strict UTF-8 reader, which owes nothing to the code under test: only invalid
// bytes come out differently when replaced than when dropped.
inline bool isValidUtf8(const std::string& text) {
    using Invalid = nlohmann::json::error_handler_t;
    const nlohmann::json json(text);
    return json.dump(-1, ' ', false, Invalid::replace) == json.dump(-1, ' ', false, Invalid::ignore);
}

}  // namespace tunelark::fuzz
