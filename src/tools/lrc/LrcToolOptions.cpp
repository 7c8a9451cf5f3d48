#include "tools/lrc/LrcToolOptions.h"

#include "platform/Localized.h"
#include "platform/WholeNumber.h"

#include <string_view>

namespace tunelark {

const char* const kLrcToolUsage = catalogued(
    "Usage: tunelark-lrc [--charset NAME] [--language LANG] [--json] FILE [SECONDS...]\n"
    "       tunelark-lrc --detect [--json] FILE\n"
    "       tunelark-lrc --list [--json]\n"
    "Reads a lyric file as the player does: chooses its encoding, decodes it, reads its time tags, and\n"
    "tells for each SECONDS which line is current and which comes next.\n"
    "\n"
    "  --charset NAME   the encoding name stored for the file (one of --list; others fall back to the\n"
    "                   default encoding but are still named in messages)\n"
    "  --language LANG  the preferred language, such as zh-Hans-CN (default: from LANGUAGE, LC_ALL,\n"
    "                   LC_MESSAGES and LANG)\n"
    "  --json           print one JSON value instead of text\n"
    "  --list           print the 46 encoding names in order\n"
    "  --detect         print every encoding name in which FILE decodes\n"
    "  --help           print this text\n"
    "  --version        print the version\n"
    "\n"
    "Exit status: 0 done; 1 FILE missing or unreadable; 2 FILE does not decode, or a usage error.\n");

namespace {

using Mode = LrcToolOptions::Mode;

ParsedLrcToolOptions failure(std::string error) {
    return {std::nullopt, std::move(error)};
}

bool looksLikeNumber(const std::string& arg) {
    return readSeconds(arg).has_value();
}

// Checks that the arguments given fit the chosen mode.
ParsedLrcToolOptions validated(LrcToolOptions options, bool haveFile) {
    const bool encodingOptions = options.charset || options.language;
    switch (options.mode) {
    case Mode::Help:
    case Mode::Version:
        return {std::move(options), {}};
    case Mode::List:
        if (haveFile || encodingOptions) return failure("--list takes no FILE, --charset or --language");
        return {std::move(options), {}};
    case Mode::Detect:
        if (!haveFile) return failure("--detect needs a FILE (see --help)");
        if (!options.positions.empty() || encodingOptions) {
            return failure("--detect takes only a FILE, without SECONDS, --charset or --language");
        }
        return {std::move(options), {}};
    case Mode::Check:
        if (!haveFile) return failure("missing FILE (see --help)");
        return {std::move(options), {}};
    }
    return failure("unknown mode");
}

// --help and --version win over everything else; --list and --detect exclude each other.
bool setMode(LrcToolOptions& options, Mode mode) {
    if (options.mode == Mode::Help || options.mode == Mode::Version) return true;
    if (mode == Mode::List || mode == Mode::Detect) {
        if (options.mode != Mode::Check && options.mode != mode) return false;
    }
    options.mode = mode;
    return true;
}

}  // namespace

std::optional<double> readSeconds(const std::string& text) { return parseFiniteDecimal(text); }

ParsedLrcToolOptions parseLrcToolOptions(std::span<const std::string> args) {
    LrcToolOptions options;
    bool haveFile = false;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool isOption = !optionsEnded && arg.size() > 1 && arg.front() == '-' &&
                              !(haveFile && looksLikeNumber(arg));
        if (!isOption) {
            if (!haveFile) {
                options.file = arg;
                haveFile = true;
            } else if (const auto seconds = readSeconds(arg)) {
                options.positions.push_back(*seconds);
            } else {
                return failure("not a number of seconds: '" + arg + "'");
            }
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "--charset" || arg == "--language") {
            if (i + 1 >= args.size()) return failure("option '" + arg + "' needs a value");
            (arg == "--charset" ? options.charset : options.language) = args[++i];
        } else if (arg.starts_with("--charset=")) {
            options.charset = arg.substr(10);
        } else if (arg.starts_with("--language=")) {
            options.language = arg.substr(11);
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "--list" || arg == "--detect" || arg == "--help" || arg == "-h" || arg == "--version") {
            const Mode mode = arg == "--list"     ? Mode::List
                              : arg == "--detect" ? Mode::Detect
                              : arg == "--version" ? Mode::Version
                                                   : Mode::Help;
            if (!setMode(options, mode)) return failure("--list and --detect cannot be used together");
        } else {
            return failure("unknown option '" + arg + "' (see --help)");
        }
    }
    return validated(std::move(options), haveFile);
}

}  // namespace tunelark
