#pragma once
#include <array>
#include <optional>
#include <string_view>

namespace tunelark {

// The play modes in the order the mode button steps through them, the last followed by the first.
enum class PlayMode { cycle, random, sequence };

inline constexpr std::array<PlayMode, 3> kPlayModes{PlayMode::cycle, PlayMode::random, PlayMode::sequence};

// The text the page and the console know a mode by: "cycle", "random", "sequence".
std::string_view playModeText(PlayMode mode);
// The mode a text names; nothing for any other text.
std::optional<PlayMode> playModeNamed(std::string_view text);
// The mode the mode button steps to.
PlayMode playModeAfter(PlayMode mode);
// How many presses of the mode button lead from one mode to another (0 to 2).
int playModeSteps(PlayMode from, PlayMode to);

}  // namespace tunelark
