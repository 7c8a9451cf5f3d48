#include "desktop/StableDigest.h"

#include <cstdint>
#include <cstdio>

namespace tunelark {

std::string stableDigest(std::string_view bytes) {
    std::uint64_t hash = 14695981039346656037ull;
    for (unsigned char c : bytes) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

}  // namespace tunelark
