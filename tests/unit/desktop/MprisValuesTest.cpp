#include "desktop/MprisValues.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <regex>
#include <set>

namespace tunelark {
namespace {

TEST(MprisValuesTest, ModeChangeStepsFollowThePageCycle) {
    struct Case {
        const char* from;
        const char* to;
        std::optional<int> steps;
    };
    const Case cases[] = {
        {"cycle", "cycle", 0},    {"cycle", "random", 1},    {"cycle", "sequence", 2},
        {"random", "sequence", 1}, {"random", "cycle", 2},   {"sequence", "cycle", 1},
        {"sequence", "random", 2}, {"shuffle", "cycle", std::nullopt}, {"cycle", "", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(modeChangeSteps(c.from, c.to), c.steps) << c.from << " -> " << c.to;
}

TEST(MprisValuesTest, AnUnknownModeReadsAsNoLoopAndNoShuffle) {
    EXPECT_EQ(loopStatusForMode("Cycle"), "None");
    EXPECT_FALSE(shuffleForMode("Random"));
    EXPECT_EQ(modeForShuffle(false, "odd"), "odd");
    EXPECT_EQ(modeForShuffle(true, "odd"), "random");
    EXPECT_EQ(modeForLoopStatus("playlist", "cycle"), std::nullopt) << "the interface's texts are exact";
}

TEST(MprisValuesTest, TheNearestSpeedTakesTheLowerOnATieAndRefusesNonPositiveRates) {
    struct Case {
        double rate;
        std::optional<int> index;
    };
    const Case cases[] = {
        {0.25, 0},  {0.01, 0},   {0.375, 0}, {0.3751, 1}, {1.0, 3},     {1.124, 3},
        {1.125, 3}, {1.126, 4},  {1.5, 5},   {1.6, 5},    {1.99, 7},    {1e300, 7},
        {0.0, std::nullopt}, {-0.5, std::nullopt}, {std::nan(""), std::nullopt},
        {std::numeric_limits<double>::infinity(), std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(nearestSpeedIdx(c.rate), c.index) << c.rate;
}

TEST(MprisValuesTest, MicrosecondsAreRoundedAndStayInRange) {
    EXPECT_EQ(microseconds(0.0), 0);
    EXPECT_EQ(microseconds(10.08), 10'080'000);
    EXPECT_EQ(microseconds(200.0000004), 200'000'000);
    EXPECT_EQ(microseconds(-1.5), -1'500'000);
    EXPECT_EQ(microseconds(std::nan("")), std::nullopt);
    EXPECT_EQ(microseconds(1e300), std::nullopt);
    EXPECT_EQ(microseconds(-std::numeric_limits<double>::infinity()), std::nullopt);
}

TEST(MprisValuesTest, TrackIdsAreValidObjectPathsStableAndDistinct) {
    // An object path: "/" then elements of [A-Za-z0-9_], separated by single slashes.
    const std::regex objectPath("(/[A-Za-z0-9_]+)+");
    const std::string names[] = {"file:///Music/a.mp3", "file:///Music/b.mp3", "file:///%E4%B8%AD/%20x.mp3",
                                 "file:///Music/A.mp3", std::string("file:///\xff\x00z.mp3", 15)};
    std::set<std::string> ids;
    for (const auto& name : names) {
        const std::string id = trackIdFor(name);
        EXPECT_TRUE(std::regex_match(id, objectPath)) << id;
        EXPECT_EQ(trackIdFor(name), id);
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), std::size(names));
    EXPECT_EQ(trackIdFor(""), kNoTrackId);
}

}  // namespace
}  // namespace tunelark
