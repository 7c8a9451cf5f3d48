#include "platform/Console.h"

#include <cstdio>

namespace tunelark {

void consoleLine(std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

}  // namespace tunelark
