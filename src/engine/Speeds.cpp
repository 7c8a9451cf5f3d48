#include "engine/Speeds.h"

#include <cstdlib>
#include <string>

namespace tunelark {

float rateForSpeedIdx(int index) {
    return std::strtof(std::string(kSpeeds.at(static_cast<std::size_t>(index))).c_str(), nullptr);
}

}  // namespace tunelark
