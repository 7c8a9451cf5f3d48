#pragma once
#include <array>
#include <string_view>

namespace tunelark {

// The playback rates; the texts are also what the page shows.
inline constexpr std::array<std::string_view, 8> kSpeeds{"0.25", "0.5", "0.75", "1.0", "1.25", "1.50", "1.75", "2.0"};
inline constexpr int kInitialSpeedIdx = 3;

// kSpeeds[index] as a 32-bit float.
float rateForSpeedIdx(int index);

}  // namespace tunelark
