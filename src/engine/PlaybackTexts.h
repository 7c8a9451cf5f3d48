#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

// The playback rates; the texts are also what the page shows.
inline constexpr std::array<std::string_view, 8> kSpeeds{"0.25", "0.5", "0.75", "1.0", "1.25", "1.50", "1.75", "2.0"};
inline constexpr int kInitialSpeedIdx = 3;

// The play modes in the order the mode button steps through them, the last followed by the first.
inline constexpr std::array<std::string_view, 3> kPlayModes{"cycle", "random", "sequence"};
// The place of a mode in kPlayModes; nothing for any other text.
std::optional<std::size_t> playModeIndex(std::string_view mode);

// kSpeeds[index] as a 32-bit float.
float rateForSpeedIdx(int index);

// "%02d:%02d" of whole minutes and the remaining whole seconds (minutes are not limited to two digits);
// a negative or non-finite time reads as 0.
std::string timeText(double seconds);

// The slider value: position * 10000 / duration, truncated; nothing when the duration is 0, negative
// or not finite.
std::optional<std::int64_t> sliderValue(double position, double duration);

}  // namespace tunelark
