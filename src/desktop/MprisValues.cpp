#include "desktop/MprisValues.h"

#include "desktop/StableDigest.h"
#include "engine/Speeds.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tunelark {

std::string loopStatusForMode(PlayMode playMode) { return playMode == PlayMode::sequence ? "None" : "Playlist"; }

bool shuffleForMode(PlayMode playMode) { return playMode == PlayMode::random; }

std::optional<PlayMode> modeForLoopStatus(const std::string& loopStatus, PlayMode playMode) {
    if (loopStatus == "None") return PlayMode::sequence;
    if (loopStatus == "Playlist") return playMode == PlayMode::random ? PlayMode::random : PlayMode::cycle;
    return std::nullopt;
}

PlayMode modeForShuffle(bool shuffle, PlayMode playMode) {
    if (shuffle) return PlayMode::random;
    return playMode == PlayMode::random ? PlayMode::cycle : playMode;
}

std::optional<int> nearestSpeedIdx(double rate) {
    if (!std::isfinite(rate) || rate <= 0) return std::nullopt;
    // Clamped first: far beyond the table every distance rounds to the same number.
    const int last = static_cast<int>(kSpeeds.size()) - 1;
    rate = std::clamp(rate, static_cast<double>(rateForSpeedIdx(0)), static_cast<double>(rateForSpeedIdx(last)));
    int best = 0;
    for (int i = 1; i < static_cast<int>(kSpeeds.size()); ++i) {
        if (std::fabs(rateForSpeedIdx(i) - rate) < std::fabs(rateForSpeedIdx(best) - rate)) best = i;
    }
    return best;
}

std::optional<std::int64_t> microseconds(double seconds) {
    // Beyond about 292,000 years the microseconds leave the 64-bit range.
    constexpr double kLimit = 9.2e18;
    if (!std::isfinite(seconds)) return std::nullopt;
    const double value = std::round(seconds * 1e6);
    if (value > kLimit || value < -kLimit) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::string trackIdFor(const std::string& filePath) {
    if (filePath.empty()) return kNoTrackId;
    // Object paths allow only [A-Za-z0-9_] in an element.
    return "/org/tunelark/Tunelark/track/t" + stableDigest(filePath);
}

}  // namespace tunelark
