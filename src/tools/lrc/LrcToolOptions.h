#pragma once
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tunelark {

// What the lyric checker was asked to do.
struct LrcToolOptions {
    enum class Mode { Check, List, Detect, Help, Version };
    Mode mode = Mode::Check;
    std::optional<std::string> charset;   // the stored encoding name, as the player keeps it
    std::optional<std::string> language;  // the first preferred language; from the locale when absent
    bool json = false;
    std::string file;
    std::vector<double> positions;  // seconds
};

struct ParsedLrcToolOptions {
    std::optional<LrcToolOptions> options;
    std::string error;  // one line, set when options is empty
};

// Reads the arguments after the program name.
ParsedLrcToolOptions parseLrcToolOptions(std::span<const std::string> args);

// Reads a whole argument as a number of seconds in the C locale; nothing for other text.
std::optional<double> readSeconds(const std::string& text);

extern const char* const kLrcToolUsage;

}  // namespace tunelark
