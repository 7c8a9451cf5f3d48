#include "engine/PlaybackTexts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tunelark {

float rateForSpeedIdx(int index) {
    return std::strtof(std::string(kSpeeds.at(static_cast<std::size_t>(index))).c_str(), nullptr);
}

std::string timeText(double seconds) {
    // Clamped far beyond any track so the conversion to an integer stays defined.
    constexpr double kLongest = 1e12;
    if (!std::isfinite(seconds) || seconds < 0) seconds = 0;
    auto whole = static_cast<long long>(std::min(seconds, kLongest));
    char text[48];
    std::snprintf(text, sizeof text, "%02lld:%02lld", whole / 60, whole % 60);
    return text;
}

std::optional<std::int64_t> sliderValue(double position, double duration) {
    if (!std::isfinite(duration) || duration <= 0 || !std::isfinite(position)) return std::nullopt;
    double value = std::trunc(position * 10000.0 / duration);
    constexpr double kLimit = 9e18;
    if (value > kLimit || value < -kLimit) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::optional<std::size_t> playModeIndex(std::string_view mode) {
    for (std::size_t i = 0; i < kPlayModes.size(); ++i) {
        if (kPlayModes[i] == mode) return i;
    }
    return std::nullopt;
}

}  // namespace tunelark
