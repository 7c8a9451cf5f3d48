#include "page/PlayMode.h"

namespace tunelark {

namespace {

constexpr std::array<std::string_view, kPlayModes.size()> kTexts{"cycle", "random", "sequence"};

std::size_t place(PlayMode mode) { return static_cast<std::size_t>(mode); }

}  // namespace

std::string_view playModeText(PlayMode mode) { return kTexts[place(mode)]; }

std::optional<PlayMode> playModeNamed(std::string_view text) {
    for (PlayMode mode : kPlayModes) {
        if (playModeText(mode) == text) return mode;
    }
    return std::nullopt;
}

PlayMode playModeAfter(PlayMode mode) { return kPlayModes[(place(mode) + 1) % kPlayModes.size()]; }

int playModeSteps(PlayMode from, PlayMode to) {
    return static_cast<int>((place(to) + kPlayModes.size() - place(from)) % kPlayModes.size());
}

}  // namespace tunelark
