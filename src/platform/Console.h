#pragma once
#include <string_view>

namespace tunelark {

// One console line on standard output, flushed at once (tests read it from a pipe).
void consoleLine(std::string_view line);

}  // namespace tunelark
