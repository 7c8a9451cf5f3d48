#include "engine/TimeText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tunelark {

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

}  // namespace tunelark
