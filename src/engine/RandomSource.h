#pragma once
#include <cstdint>
#include <functional>

namespace tunelark {

// Uniformly distributed 32-bit numbers from a generator seeded by the system's entropy source.
std::function<std::uint32_t()> makeRandomSource();

}  // namespace tunelark
