#include "engine/lyrics/LrcTimeline.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tunelark {
namespace {

using Entries = std::vector<std::pair<double, std::string>>;

Entries entriesOf(const LrcTimeline& timeline) {
    Entries entries;
    for (std::size_t i = 0; i < timeline.size(); ++i) {
        entries.emplace_back(timeline.timeLineArray[i], timeline.lineText(i));
    }
    return entries;
}

Entries parsed(std::string_view text) {
    LrcTimeline timeline;
    timeline.parse(text);
    EXPECT_EQ(timeline.timeLineArray.size(), timeline.wordLineArray.size());
    return entriesOf(timeline);
}

struct ParseCase {
    const char* name;
    std::string text;
    Entries expected;
};

TEST(LrcTimelineTest, LinesAndTags) {
    const std::vector<ParseCase> cases = {
        {"empty text", "", {}},
        {"only line feeds", "\n\n\n", {}},
        {"two tagged lines, trailing empty line skipped", "[00:10.00]A\n[00:20.00]B\n", {{10.0, "A"}, {20.0, "B"}}},
        {"carriage returns are removed", "[00:10.00]A\r\n[00:20.00]B\r\n", {{10.0, "A"}, {20.0, "B"}}},
        {"a lone carriage return line is an empty entry", "[00:10.00]A\r\n\r\n[00:20.00]B\r\n",
         {{10.0, "A"}, {0.0, ""}, {20.0, "B"}}},
        {"carriage returns anywhere in a line", "[00:0\r1.00]A\rB\r", {{1.0, "AB"}}},
        {"a lone carriage return does not end a line", "[00:01.00]A\rB", {{1.0, "AB"}}},
        {"tag without text", "[00:05.00]", {{5.0, ""}}},
        {"text keeps its leading spaces", "[00:05.00]  sung", {{5.0, "  sung"}}},
        {"plain text has time zero", "Intro text", {{0.0, "Intro text"}}},
        {"no closing bracket", "[00:12 no closing bracket", {{0.0, "[00:12 no closing bracket"}}},
        {"no opening bracket", "00:12] no opening bracket", {{0.0, "00:12] no opening bracket"}}},
        {"header tags are skipped", "[ar:Someone]\n[ti:Title]\n[al:Album]\n[by:X]\n[offset:+500]\n[00:01]A",
         {{1.0, "A"}}},
        {"empty tag is skipped", "[]Text", {}},
        {"tag without a colon is skipped", "[0012]Text", {}},
        {"text before the first bracket is discarded", "xx[00:03.50]Text", {{3.5, "Text"}}},
        {"only the first tag counts", "[00:01.00][00:05.00]Both", {{1.0, "[00:05.00]Both"}}},
        {"file order is kept, never sorted", "[00:20]B\n[00:10]A\nC", {{20.0, "B"}, {10.0, "A"}, {0.0, "C"}}},
        {"closing bracket before opening bracket drops the line", "a]b[00:01]c", {}},
        {"non-ASCII text is kept byte for byte", "[00:02.00]\xe4\xb8\xad\xe6\x96\x87 \xc3\xa9",
         {{2.0, "\xe4\xb8\xad\xe6\x96\x87 \xc3\xa9"}}},
        {"byte-order mark before a tag is discarded", "\xef\xbb\xbf[00:01]A\n\xef\xbb\xbfplain",
         {{1.0, "A"}, {0.0, "\xef\xbb\xbfplain"}}},
    };
    for (const ParseCase& c : cases) EXPECT_EQ(parsed(c.text), c.expected) << c.name;
}

struct TimeCase {
    const char* tag;
    std::optional<double> seconds;  // none: the line is skipped
};

TEST(LrcTimelineTest, TagTimesAreReadLikeCNumbers) {
    const std::vector<TimeCase> cases = {
        {"[1:5]", 65.0},
        {"[01:02:03]", 62.0},
        {"[01.5:02]", 62.0},
        {"[ 01 : 02.5 ]", 62.5},
        {"[\t01:\t02.5]", 62.5},
        {"[-1:00]", -60.0},
        {"[-1:30]", -30.0},
        {"[+2:+1.5]", 121.5},
        {"[00:-1.5]", -1.5},
        {"[00:.5]", 0.5},
        {"[00:5.]", 5.0},
        {"[00:1e1]", 10.0},
        {"[00:1.5E-1]", 0.15},
        {"[00:2e]", 2.0},
        {"[00:2e+]", 2.0},
        {"[00:3x]", 3.0},
        {"[1x:00]", 60.0},
        {"[00:0x10]", 0.0},
        {"[:10]", std::nullopt},
        {"[00:]", std::nullopt},
        {"[ab:10]", std::nullopt},
        {"[- 1:10]", std::nullopt},
        {"[00:.]", std::nullopt},
        {"[00:inf]", std::nullopt},
        {"[00:nan]", std::nullopt},
        {"[00:e5]", std::nullopt},
        {"[00:1e-400]", 0.0},
    };
    for (const TimeCase& c : cases) {
        const Entries entries = parsed(std::string(c.tag) + "x");
        if (!c.seconds) {
            EXPECT_TRUE(entries.empty()) << c.tag;
            continue;
        }
        ASSERT_EQ(entries.size(), 1u) << c.tag;
        EXPECT_DOUBLE_EQ(entries[0].first, *c.seconds) << c.tag;
        EXPECT_EQ(entries[0].second, "x") << c.tag;
    }
}

TEST(LrcTimelineTest, HugeNumbersSaturateInsteadOfFailing) {
    const Entries entries = parsed("[99999999999999999999999:00]a\n[-99999999999999999999999:00]b\n"
                                   "[00:1e400]c\n[00:-1e99999999999999999999999]d\n"
                                   "[00:" + std::string(400, '9') + "]e\n[00:0." + std::string(400, '0') + "1]f");
    ASSERT_EQ(entries.size(), 6u);
    EXPECT_DOUBLE_EQ(entries[0].first, static_cast<double>(std::numeric_limits<std::int64_t>::max()) * 60.0);
    EXPECT_DOUBLE_EQ(entries[1].first, static_cast<double>(std::numeric_limits<std::int64_t>::min()) * 60.0);
    EXPECT_EQ(entries[2].first, std::numeric_limits<double>::infinity());
    EXPECT_EQ(entries[3].first, -std::numeric_limits<double>::infinity());
    EXPECT_EQ(entries[4].first, std::numeric_limits<double>::infinity());
    EXPECT_EQ(entries[5].first, 0.0);
}

TEST(LrcTimelineTest, ClearEmptiesEverything) {
    LrcTimeline timeline;
    timeline.lrcString = "[00:01]A";
    timeline.parse("[00:01]A\n[00:02]B");
    ASSERT_EQ(timeline.size(), 2u);
    timeline.clear();
    EXPECT_FALSE(timeline.lrcString.has_value());
    EXPECT_TRUE(timeline.empty());
    EXPECT_TRUE(timeline.wordLineArray.empty());
    EXPECT_EQ(timeline.currentLine(5.0), std::nullopt);
    EXPECT_EQ(timeline.laterLine(5.0), std::nullopt);
}

struct WalkCase {
    double position;
    std::optional<std::size_t> later;
    std::optional<std::size_t> current;
};

void expectWalk(const std::string& text, const std::vector<WalkCase>& cases) {
    LrcTimeline timeline;
    timeline.parse(text);
    for (const WalkCase& c : cases) {
        EXPECT_EQ(timeline.laterLine(c.position), c.later) << text << " at " << c.position;
        EXPECT_EQ(timeline.currentLine(c.position), c.current) << text << " at " << c.position;
    }
}

TEST(LrcTimelineTest, LinesSwitchShortlyBeforeTheirTime) {
    expectWalk("[00:10.00]A\n[00:20.00]B\n", {
                                                 {0.0, 0, 0},
                                                 {9.9, 0, 0},
                                                 {9.99, 1, 0},
                                                 {19.9, 1, 0},
                                                 {19.99, std::nullopt, 1},
                                                 {100.0, std::nullopt, 1},
                                                 {-5.0, 0, 0},
                                             });
    // The lead is subtracted exactly here, so the comparison itself must be strict.
    expectWalk("[00:00.02]A\n[00:01]B", {{0.0, 1, 0}, {-0.001, 0, 0}});
}

TEST(LrcTimelineTest, EqualAndUnsortedTimesFollowTheWalk) {
    // Among equal times the later one in the file becomes current.
    expectWalk("[00:10]A\n[00:10]B\n[00:20]C", {{15.0, 2, 1}, {5.0, 0, 0}, {25.0, std::nullopt, 2}});
    // The first entry still to come decides, not the greatest time passed.
    expectWalk("[00:20]A\n[00:10]B", {{15.0, 0, 0}, {25.0, std::nullopt, 1}});
    expectWalk("[00:10]A\n[00:20]B\nC", {{25.0, std::nullopt, 2}, {15.0, 1, 0}});
    // Plain lines at time zero sit in the middle of the walk.
    expectWalk("[00:10]A\nnote\n[00:30]C", {{12.0, 2, 1}, {5.0, 0, 0}});
    expectWalk("[-1:00]A\n[00:05]B", {{-70.0, 0, 0}, {0.0, 1, 0}});
}

TEST(LrcTimelineTest, EmptyTimelineHasNoLines) {
    expectWalk("", {{0.0, std::nullopt, std::nullopt}, {10.0, std::nullopt, std::nullopt}});
    expectWalk("[ar:Someone]", {{0.0, std::nullopt, std::nullopt}});
}

TEST(LrcTimelineTest, ParsesLongFilesLineByLine) {
    // One long line per entry and many short ones: the parser must keep each entry's text whole.
    std::string text;
    const std::string longText(100000, 'x');
    for (int i = 0; i < 20000; ++i) text += "[00:01]" + std::to_string(i) + "\r\n";
    text += "[00:02]" + longText;
    LrcTimeline timeline;
    timeline.parse(text);
    ASSERT_EQ(timeline.size(), 20001u);
    EXPECT_EQ(timeline.lineText(0), "0");
    EXPECT_EQ(timeline.lineText(19999), "19999");
    EXPECT_EQ(timeline.lineText(20000), longText);
}

}  // namespace
}  // namespace tunelark
