#include "desktop/CommandLine.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

using Action = CommandLine::Action;

TEST(CommandLineTest, ArgumentsBecomeFilesHelpAndVersionOrOneError) {
    struct Case {
        std::vector<std::string> args;
        Action action;
        std::vector<std::string> files;
        std::string error;
    };
    const std::vector<Case> cases{
        {{}, Action::Run, {}, ""},
        {{"a.mp3", "/x/b.lrc"}, Action::Run, {"a.mp3", "/x/b.lrc"}, ""},
        {{"-"}, Action::Run, {"-"}, ""},
        {{"--", "--help", "-x.mp3"}, Action::Run, {"--help", "-x.mp3"}, ""},
        {{"a.mp3", "--help"}, Action::Help, {"a.mp3"}, ""},
        {{"-h"}, Action::Help, {}, ""},
        {{"--version"}, Action::Version, {}, ""},
        {{"--version", "--help"}, Action::Help, {}, ""},
        {{"--bogus", "--version"}, Action::Version, {}, ""},
        {{"--bogus", "-v", "a.mp3"}, Action::Fail, {"a.mp3"}, "unknown option '--bogus' (see --help)"},
        {{"--gapplication-service"}, Action::Fail, {}, "unknown option '--gapplication-service' (see --help)"},
        {{"--help=1"}, Action::Fail, {}, "unknown option '--help=1' (see --help)"},
    };
    for (const auto& c : cases) {
        const CommandLine result = parseCommandLine(c.args);
        const std::string given = c.args.empty() ? "(none)" : c.args.front();
        EXPECT_EQ(result.action, c.action) << given;
        EXPECT_EQ(result.files, c.files) << given;
        EXPECT_EQ(result.error, c.error) << given;
    }
}

TEST(CommandLineTest, TheVersionAndUsageNameTheProgram) {
    EXPECT_TRUE(versionText().starts_with("tunelark "));
    EXPECT_NE(versionText(), "tunelark unknown") << "the build gives the version";
    EXPECT_EQ(std::string(kTunelarkUsage).rfind("Usage: tunelark ", 0), 0u);
}

}  // namespace
}  // namespace tunelark
