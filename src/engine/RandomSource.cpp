#include "engine/RandomSource.h"

#include <limits>
#include <memory>
#include <random>

namespace tunelark {

std::function<std::uint32_t()> makeRandomSource() {
    std::random_device entropy;
    auto generator = std::make_shared<std::mt19937>(entropy());
    return [generator] {
        std::uniform_int_distribution<std::uint32_t> uniform(0, std::numeric_limits<std::uint32_t>::max());
        return uniform(*generator);
    };
}

}  // namespace tunelark
