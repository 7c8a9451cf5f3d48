#include "engine/lyrics/LrcTimeline.h"

#include <gtest/gtest.h>

#include <limits>

namespace tunelark {
namespace {

using Entries = std::vector<std::pair<double, std::string>>;

TEST(LrcTimelineTest, LinesTagsAndTimes) {
    const std::string big(23, '9'), nines(400, '9'), zeros(400, '0');
    const double inf = std::numeric_limits<double>::infinity(), minutes = 60 * static_cast<double>(INT64_MAX);
    for (const auto& [text, expected] : std::vector<std::pair<std::string, Entries>>{
             {"[00:10.00]A\r\n\r\n[00:2\r0.00]B\rC\r\n", {{10, "A"}, {0, ""}, {20, "BC"}}},
             {"[ar:Someone]\n[offset:+500]\n[]T\n[0012]T\n[00:01][00:05]A", {{1, "[00:05]A"}}},
             {"Intro\n[00:12 open\nxx[00:03.50]Text\na]b[00:01]c", {{0, "Intro"}, {0, "[00:12 open"}, {3.5, "Text"}}},
             {"[00:20]B\n[00:10]A\n\xef\xbb\xbf[00:01]C\n\xef\xbb\xbf" "D",  // file order; a mark before a tag is dropped
              {{20, "B"}, {10, "A"}, {1, "C"}, {0, "\xef\xbb\xbf" "D"}}},
             // Times are read like C numbers; a tag without one drops its line, huge ones saturate.
             {"[1:5]a\n[01:02:03]b\n[ 01 :\t02.5 ]c\n[-1:30]d\n[+2:+1.5]e\n[00:1e1]f\n[00:2e+]g\n[00:3x]h\n[00:0x10]i",
              {{65, "a"}, {62, "b"}, {62.5, "c"}, {-30, "d"}, {121.5, "e"}, {10, "f"}, {2, "g"}, {3, "h"}, {0, "i"}}},
             {"[:10]a\n[00:]b\n[- 1:10]c\n[00:inf]d\n[00:nan]e\n[00:e5]f\n[00:1e-400]g", {{0, "g"}}},
             {"[" + big + ":00]a\n[00:1e400]b\n[00:-1e" + big + "]c\n[00:" + nines + "]d\n[00:0." + zeros + "1]e",
              {{minutes, "a"}, {inf, "b"}, {-inf, "c"}, {inf, "d"}, {0, "e"}}}}) {
        LrcTimeline timeline;
        timeline.parse(text);
        const std::vector<double>& times = timeline.timeLineArray;
        ASSERT_EQ(times.size(), timeline.wordLineArray.size());
        Entries entries;
        for (std::size_t i = 0; i < times.size(); ++i) entries.emplace_back(times[i], timeline.lineText(i));
        EXPECT_EQ(entries, expected) << text.substr(0, 40);
    }
}

// Each case: the lyrics, then {position, later line, current line}.
TEST(LrcTimelineTest, LinesSwitchShortlyBeforeTheirTimeInFileOrder) {
    using Walk = std::vector<std::tuple<double, std::optional<std::size_t>, std::optional<std::size_t>>>;
    const auto none = std::nullopt;
    for (const auto& [text, walk] : std::vector<std::pair<std::string, Walk>>{
             {"[00:10.00]A\n[00:20.00]B\n", {{-5, 0, 0}, {9.9, 0, 0}, {9.99, 1, 0}, {19.99, none, 1}, {100, none, 1}}},
             {"[00:00.02]A\n[00:01]B", {{0.0, 1, 0}, {-0.001, 0, 0}}},  // the comparison is strict
             {"[ar:Someone]", {{0.0, none, none}}},
             {"[00:10]A\n[00:10]B\n[00:20]C", {{15, 2, 1}, {5, 0, 0}, {25, none, 2}}},  // the later equal one
             {"[00:20]A\n[00:10]B", {{15, 0, 0}, {25, none, 1}}},  // the first still to come decides
             {"[00:10]A\nnote\n[00:30]C", {{12, 2, 1}, {5, 0, 0}}},
             {"[-1:00]A\n[00:05]B", {{-70, 0, 0}, {0, 1, 0}}}}) {
        LrcTimeline timeline;
        timeline.parse(text);
        for (const auto& [position, later, current] : walk) {
            EXPECT_EQ(timeline.laterLine(position), later) << text << " at " << position;
            EXPECT_EQ(timeline.currentLine(position), current) << text << " at " << position;
        }
    }
}

}  // namespace
}  // namespace tunelark
