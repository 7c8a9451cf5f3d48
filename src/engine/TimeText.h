#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace tunelark {

// "%02d:%02d" of whole minutes and the remaining whole seconds (minutes are not limited to two digits);
// a negative or non-finite time reads as 0.
std::string timeText(double seconds);

// The slider value: position * 10000 / duration, truncated; nothing when the duration is 0, negative
// or not finite.
std::optional<std::int64_t> sliderValue(double position, double duration);

}  // namespace tunelark
