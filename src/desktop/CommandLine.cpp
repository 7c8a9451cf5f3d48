#include "desktop/CommandLine.h"

#include "platform/Localized.h"

#ifndef TUNELARK_VERSION
#define TUNELARK_VERSION "unknown"
#endif

namespace tunelark {

const char* const kTunelarkUsage = catalogued(
    "Usage: tunelark [FILE...]\n"
    "Plays MP3 files with synchronised LRC lyrics.\n"
    "\n"
    "Each FILE ending in .mp3 or .lrc is added to the play list, and the first audio file among them\n"
    "plays. A FILE that is a folder adds every .mp3 and .lrc file inside it, in subfolders too. When\n"
    "Tunelark is already running, the running player takes the files.\n"
    "\n"
    "  --help     print this text\n"
    "  --version  print the version\n"
    "\n"
    "Environment: GDK_BACKEND chooses the display system (x11 unless set; on Wayland desktops the\n"
    "floating lyrics window needs X11 to stay above other windows).\n");

std::string versionText() { return std::string("tunelark ") + TUNELARK_VERSION; }

CommandLine parseCommandLine(std::span<const std::string> args) {
    CommandLine result;
    bool optionsEnded = false;
    std::string unknown;
    for (const auto& arg : args) {
        if (optionsEnded || arg.size() < 2 || arg.front() != '-') {
            result.files.push_back(arg);
        } else if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "--help" || arg == "-h") {
            result.action = CommandLine::Action::Help;
        } else if (arg == "--version") {
            if (result.action != CommandLine::Action::Help) result.action = CommandLine::Action::Version;
        } else if (unknown.empty()) {
            unknown = arg;
        }
    }
    if (result.action == CommandLine::Action::Run && !unknown.empty()) {
        result.action = CommandLine::Action::Fail;
        result.error = "unknown option '" + unknown + "' (see --help)";
    }
    return result;
}

}  // namespace tunelark
