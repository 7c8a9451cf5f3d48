#include "EngineFixture.h"
#include "engine/PlaybackClock.h"
#include "engine/PlaybackTexts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PlaybackClockTest : public EngineFixture {
protected:
    PlaybackClockTest() {
        seams.mainWindowVisible = [this] { return mainWindowShown; };
    }

    // A playing track of 200 s with lines at 10, 20, 30 and 40 s.
    std::shared_ptr<FakeTrack> playSongWithLyrics() {
        addSong("song.mp3");
        addLyrics("song.lrc", "[00:10.00]A\n[00:20.00]B\n[00:30.00]C\n[00:40.00]D\n");
        player.playItem(fileUrlFromPath(dir.file("song.mp3")));
        sent();
        lyricTexts.clear();
        return players.last();
    }

    bool mainWindowShown = true;
    PlayerUtil player{deps(), seams};
    PlaybackClock clock{player};
};

TEST_F(PlaybackClockTest, WithoutATrackEveryTickSendsOnlyMinusOne) {
    addLyrics("x.lrc", "[00:01.00]x\n");
    for (int i = 0; i < 3; ++i) clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("-1"), current("-1"), current("-1")));
    EXPECT_THAT(lyricTexts, IsEmpty());
}

TEST_F(PlaybackClockTest, TimeTextsAreWholeMinutesAndSeconds) {
    const std::vector<std::pair<double, std::string>> cases{
        {0, "00:00"},   {83.9, "01:23"}, {65.4, "01:05"},  {205.7, "03:25"},
        {3725.0, "62:05"}, {7500, "125:00"}, {-3, "00:00"}, {std::numeric_limits<double>::quiet_NaN(), "00:00"}};
    for (const auto& [seconds, text] : cases) EXPECT_EQ(timeText(seconds), text) << seconds;
}

TEST_F(PlaybackClockTest, ATickSendsTimeSliderAndTheCurrentLine) {
    auto track = playSongWithLyrics();
    track->position = 50;

    clock.tick();

    EXPECT_THAT(sent(), ElementsAre(current("00:50"), slider(2500)));
    EXPECT_THAT(lyricTexts, ElementsAre("D"));
}

TEST_F(PlaybackClockTest, TheSliderIsLeftAloneWhileTheMainWindowIsHiddenOrTheDurationUnusable) {
    auto track = playSongWithLyrics();
    track->position = 50;
    mainWindowShown = false;
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("00:50")));

    mainWindowShown = true;
    for (double duration : {0.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        track->duration = duration;
        clock.tick();
        EXPECT_THAT(sent(), ElementsAre(current("00:50"))) << duration;
    }

    seams.mainWindowVisible = nullptr;
    track->duration = 200;
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("00:50"))) << "no main window";
}

TEST_F(PlaybackClockTest, TheLyricTextFollowsTheRowMode) {
    struct Case {
        int rows;
        double position;
        std::vector<std::string> texts;
    };
    auto track = playSongWithLyrics();
    const std::vector<Case> table{
        {1, 5, {"A"}},           // before the first line, the first counts
        {1, 25, {"B"}},
        {2, 5, {"A"}},           // two rows on line 0: line 0 alone
        {2, 15, {"A"}},
        {2, 35, {"B\nC"}},       // line 2: line 1, a line feed, line 2
        {2, 19.99, {"A\nB"}},    // a line switches 0.02 s early
        {3, 25, {}},             // any other row mode leaves the window as it is
        {0, 25, {}},
    };
    for (const Case& c : table) {
        view->displayingRowNum = c.rows;
        track->position = c.position;
        clock.tick();
        queue.drain();
        EXPECT_EQ(lyricTexts, c.texts) << c.rows << " rows at " << c.position;
        lyricTexts.clear();
    }
}

TEST_F(PlaybackClockTest, EmptyLyricsClearTheWindowOnEveryTick) {
    addSong("song.mp3");
    player.playItem(fileUrlFromPath(dir.file("song.mp3")));
    clock.tick();
    clock.tick();
    queue.drain();
    EXPECT_THAT(lyricTexts, ElementsAre("", ""));
}

TEST_F(PlaybackClockTest, WithoutALyricsWindowNoTextIsPosted) {
    playSongWithLyrics();
    seams.setLyricText = nullptr;
    clock.tick();
    EXPECT_EQ(queue.pending(), 2u) << "the two page calls only";
}

TEST_F(PlaybackClockTest, SpeedUpStopsAtTheTopAndReportsItAgain) {
    auto track = playSongWithLyrics();
    for (int i = 0; i < 5; ++i) clock.speedUp();
    std::vector<std::string> scripts = sent();
    std::vector<std::string> speeds;
    for (const auto& s : scripts) {
        if (s.rfind("setSpeed", 0) == 0) speeds.push_back(s);
    }
    EXPECT_THAT(speeds, ElementsAre(speedText("1.25"), speedText("1.50"), speedText("1.75"), speedText("2.0"),
                                    speedText("2.0")));
    EXPECT_EQ(std::count(scripts.begin(), scripts.end(), isPlaying(true)), 4) << "one per step taken while playing";
    EXPECT_FLOAT_EQ(track->rate, 2.0f);
    EXPECT_TRUE(track->playing);
}

TEST_F(PlaybackClockTest, SpeedDownStopsAtTheBottom) {
    auto track = playSongWithLyrics();
    for (int i = 0; i < 3; ++i) clock.speedDown();
    sent();
    EXPECT_FLOAT_EQ(track->rate, 0.25f);
    clock.speedDown();
    EXPECT_THAT(sent(), ElementsAre(speedText("0.25")));
    EXPECT_EQ(player.speedIdx(), 0);
}

TEST_F(PlaybackClockTest, ASpeedStepWhilePausedOnlyChangesTheRate) {
    auto track = playSongWithLyrics();
    player.pause();
    sent();
    track->calls.clear();

    clock.speedUp();

    EXPECT_THAT(sent(), ElementsAre(speedText("1.25")));
    EXPECT_THAT(track->calls, ElementsAre("setRate"));
    EXPECT_FALSE(track->playing);
    EXPECT_FLOAT_EQ(track->rate, 1.25f);
}

TEST_F(PlaybackClockTest, SpeedStepsWithoutATrackStillMoveAndReport) {
    clock.speedDown();
    EXPECT_THAT(sent(), ElementsAre(speedText("0.75")));
    addSong("song.mp3");
    player.playItem(fileUrlFromPath(dir.file("song.mp3")));
    EXPECT_FLOAT_EQ(players.last()->rate, 0.75f) << "the next track starts at the stepped rate";
}

TEST_F(PlaybackClockTest, SeekOnAPausedTrackResumesThereAndReloadsLyrics) {
    auto track = playSongWithLyrics();
    player.pause();
    sent();
    writeFile(dir.file("song.lrc"), "[00:01.00]reloaded\n");

    clock.seek("5000");

    EXPECT_EQ(track->position, 100);
    EXPECT_TRUE(track->playing);
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), isPlaying(true)));
    EXPECT_THAT(timelineTexts(player), ElementsAre("reloaded"));
}

TEST_F(PlaybackClockTest, SeekReadsTheWholeTextAsADecimalNumber) {
    auto track = playSongWithLyrics();
    const std::vector<std::pair<std::string, double>> accepted{{"2500.5", 50.01}, {"1e3", 20}, {"0", 0}};
    for (const auto& [text, position] : accepted) {
        clock.seek(text);
        EXPECT_NEAR(track->position, position, 1e-9) << text;
    }
    track->position = 7;
    sent();
    for (const char* text : {"", "abc", "50x", " 5000", "nan", "inf"}) {
        clock.seek(text);
        EXPECT_EQ(track->position, 7) << text;
    }
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(PlaybackClockTest, SeekIsIgnoredWithoutATrackOrWithAnUnusableDuration) {
    clock.seek("5000");
    EXPECT_THAT(sent(), IsEmpty());

    auto track = playSongWithLyrics();
    track->duration = 0;
    track->position = 3;
    clock.seek("5000");
    EXPECT_EQ(track->position, 3);
    EXPECT_THAT(sent(), IsEmpty());
}

// Lyric jumps with lines at 10, 20 and 30 s.
struct JumpCase {
    bool next;
    double from;
    double to;  // < 0: nothing happens
};

TEST_F(PlaybackClockTest, LyricJumpsLandOnTheStatedLines) {
    addSong("song.mp3");
    addLyrics("song.lrc", "[00:10.00]A\n[00:20.00]B\n[00:30.00]C\n");
    player.playItem(fileUrlFromPath(dir.file("song.mp3")));
    auto track = players.last();
    const std::vector<JumpCase> table{
        {true, 15, 20.0}, {true, 5, 20.0}, {true, 31, -1}, {true, 25, 30.0},
        {false, 25, 10.08}, {false, 15, -1}, {false, 40, 20.08}, {false, 5, -1},
    };
    for (const JumpCase& c : table) {
        player.pause();
        sent();
        track->position = c.from;
        c.next ? clock.nextLyric() : clock.previousLyric();
        std::vector<std::string> scripts = sent();
        if (c.to < 0) {
            EXPECT_EQ(track->position, c.from) << c.next << " from " << c.from;
            EXPECT_FALSE(track->playing);
            EXPECT_THAT(scripts, IsEmpty());
        } else {
            EXPECT_DOUBLE_EQ(track->position, c.to) << c.next << " from " << c.from;
            EXPECT_TRUE(track->playing) << "a jump plays also from pause";
            EXPECT_THAT(scripts, ElementsAre(isPlaying(true)));
        }
    }
}

TEST_F(PlaybackClockTest, LyricJumpsDoNothingWithoutTrackOrLyrics) {
    clock.nextLyric();
    clock.previousLyric();
    addSong("song.mp3");
    player.playItem(fileUrlFromPath(dir.file("song.mp3")));
    sent();
    players.last()->position = 50;
    clock.nextLyric();
    clock.previousLyric();
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(players.last()->position, 50);
}

TEST_F(PlaybackClockTest, AJumpKeepsTheSteppedRate) {
    auto track = playSongWithLyrics();
    clock.speedDown();
    track->rate = 1;  // as if the platform had lost it
    track->position = 15;
    clock.nextLyric();
    EXPECT_FLOAT_EQ(track->rate, 0.75f);
}

TEST_F(PlaybackClockTest, APositionGoingBackwardsIsReportedAsItIs) {
    auto track = playSongWithLyrics();
    track->position = 35;
    clock.tick();
    sent();
    lyricTexts.clear();
    track->position = 12;
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("00:12"), slider(600)));
    EXPECT_THAT(lyricTexts, ElementsAre("A"));
}

}  // namespace
}  // namespace tunelark::test
