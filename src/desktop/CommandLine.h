#pragma once
#include <span>
#include <string>
#include <vector>

namespace tunelark {

// What the player's command line asks for.
struct CommandLine {
    enum class Action { Run, Help, Version, Fail };
    Action action = Action::Run;
    std::vector<std::string> files;  // in the order given
    std::string error;               // one line, for Fail
};

// Reads the arguments after the program name: --help (-h) and --version win over everything else;
// "--" ends the options; any other argument that starts with "-" (except "-" alone) is an error.
CommandLine parseCommandLine(std::span<const std::string> args);

// "tunelark " and the version.
std::string versionText();
extern const char* const kTunelarkUsage;

// The exit status of a usage error.
inline constexpr int kUsageStatus = 2;

}  // namespace tunelark
