#pragma once
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tunelark::fuzz {

// A broken promise is a crash for libFuzzer: it keeps the input and stops.
inline void require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

// Judged by the JSON library's strict writer, which owes nothing to the code under test.
inline bool isValidUtf8(std::string_view text) {
    try {
        (void)nlohmann::json(std::string(text)).dump();
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

// The code under test writes console lines for most of what it does; millions of them help nobody.
inline void silenceConsole() {
    if (!std::freopen("/dev/null", "w", stdout)) std::abort();
}

}  // namespace tunelark::fuzz
