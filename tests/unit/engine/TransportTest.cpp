#include "EngineFixture.h"

#include <gmock/gmock.h>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TransportTest : public EngineFixture {
protected:
    std::string url(const std::string& fileName) { return fileUrlFromPath(dir.file(fileName)); }

    // Plays an item and forgets what that sent.
    void playing(const std::string& fileName) {
        player.playItem(url(fileName));
        sent();
    }

    PlayerUtil player{deps(), seams};
};

TEST_F(TransportTest, PlayWithEmptyListReportsNothingPlayableAndEmptiesTheTimeline) {
    addLyrics("old.lrc", "[00:01.00]stale line\n");
    view->playingFilePath = "";
    player.timeline().parse("[00:01.00]left over\n");

    player.play();

    EXPECT_THAT(sent(), ElementsAre(playingPath(""), isPlaying(false), current("-1"), durationText("-1"), slider(0),
                                    mainFileName("")));
    EXPECT_THAT(players.openedPaths, IsEmpty());
    EXPECT_TRUE(player.timeline().empty());
    EXPECT_EQ(player.mp3Player(), nullptr);
}

TEST_F(TransportTest, PlayTriesUnresolvableEntriesInOrderAndStartsTheFirstPlayable) {
    auto first = addLostSong("a.mp3");
    auto second = addLostSong("b.mp3");
    addSong("c.mp3");

    player.play();

    EXPECT_THAT(sent(), ElementsAre(isPlaying(true), playingPath(url("c.mp3")), current("00:00"),
                                    durationText("03:20"), mainFileName("c")));
    EXPECT_THAT(dialogs.alerts, ElementsAre("You need to redo Add Operation for mp3:a.mp3 (" + url("a.mp3") + ")",
                                            "You need to redo Add Operation for mp3:b.mp3 (" + url("b.mp3") + ")"));
    EXPECT_TRUE(first->canNotUseNow);
    EXPECT_TRUE(second->canNotUseNow);
    EXPECT_FALSE(store.hasChanges()) << "the marks are saved";
    ASSERT_NE(players.last(), nullptr);
    EXPECT_TRUE(players.last()->playing);
    EXPECT_TRUE(players.last()->rateEnabled);
    EXPECT_EQ(view->playingFilePath, url("c.mp3"));
    EXPECT_TRUE(view->isPlaying);
}

TEST_F(TransportTest, PlayWhilePlayingSendsNothingAndOpensNothing) {
    addSong("a.mp3");
    player.play();
    sent();

    player.play();

    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(players.openedPaths.size(), 1u);
}

TEST_F(TransportTest, PlayAfterPauseResumesAtThePositionAndReloadsTheLyrics) {
    addSong("a.mp3");
    addLyrics("a.lrc", "[00:01.00]first version\n");
    playing("a.mp3");
    players.last()->position = 42;
    player.pause();
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
    writeFile(dir.file("a.lrc"), "[00:01.00]second version\n");

    player.play();

    EXPECT_THAT(sent(), ElementsAre(isPlaying(true)));
    EXPECT_TRUE(players.last()->playing);
    EXPECT_EQ(players.last()->position, 42);
    EXPECT_EQ(players.tracks.size(), 1u);
    EXPECT_THAT(timelineTexts(player), ElementsAre("second version"));
}

TEST_F(TransportTest, PlayAndPlayItemReportAStartDifferently) {
    addSong("a.b.mp3");

    player.play();
    EXPECT_THAT(sent(), ElementsAre(isPlaying(true), playingPath(url("a.b.mp3")), current("00:00"),
                                    durationText("03:20"), mainFileName("a.b")));

    addSong("c.mp3");
    player.playItem(url("c.mp3"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("c.mp3")), isPlaying(true),
                                    playingPath(url("c.mp3")), current("00:00"), durationText("03:20"), slider(0),
                                    mainFileName("c")));
}

TEST_F(TransportTest, PlayAndPlayItemReportAFailedStartDifferentlyAndWithoutAlert) {
    addSong("a.mp3");
    players.unplayable.insert(dir.file("a.mp3"));

    player.play();
    EXPECT_THAT(sent(), ElementsAre(playingPath(url("a.mp3")), isPlaying(false), current("-1"), durationText("-1"),
                                    slider(0), mainFileName("")));

    view->playingFilePath = "";
    player.playItem(url("a.mp3"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("a.mp3")), current("-1"), durationText("-1"),
                                    playingPath(url("a.mp3")), isPlaying(false), slider(0), mainFileName("a")));
    EXPECT_THAT(dialogs.alerts, IsEmpty());
    EXPECT_FALSE(view->isPlaying);
}

TEST_F(TransportTest, APlayerThatRefusesToStartIsReportedNotPlayable) {
    addSong("a.mp3");
    players.refusingPlay.insert(dir.file("a.mp3"));

    player.play();
    EXPECT_THAT(sent(), ElementsAre(playingPath(url("a.mp3")), isPlaying(false), current("-1"), durationText("-1"),
                                    slider(0), mainFileName("")));

    view->playingFilePath = "";
    player.playItem(url("a.mp3"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("a.mp3")), current("-1"), durationText("-1"),
                                    playingPath(url("a.mp3")), isPlaying(false), slider(0), mainFileName("a")));
    EXPECT_FALSE(view->isPlaying);
}

TEST_F(TransportTest, PlayAfterANotPlayableItemTriesTheFollowingEntries) {
    addSong("a.mp3");
    addSong("b.mp3");
    players.unplayable.insert(dir.file("a.mp3"));
    player.playItem(url("a.mp3"));
    sent();

    player.play();

    EXPECT_EQ(players.openedPaths.back(), dir.file("b.mp3"));
    EXPECT_EQ(view->playingFilePath, url("b.mp3"));
    EXPECT_TRUE(players.last()->playing);
}

TEST_F(TransportTest, PlayAfterTheLastItemFailedTriesNothing) {
    addSong("a.mp3");
    players.unplayable.insert(dir.file("a.mp3"));
    player.playItem(url("a.mp3"));
    sent();

    player.play();

    EXPECT_EQ(players.openedPaths.size(), 1u);
    EXPECT_THAT(sent(), ElementsAre(playingPath(""), isPlaying(false), current("-1"), durationText("-1"), slider(0),
                                    mainFileName("")));
}

TEST_F(TransportTest, AStaleEntryIsOpenedButReportedAndALaterPlayStartsIt) {
    auto entry = addSong("a.mp3");
    moveAside("a.mp3");

    player.playItem(url("a.mp3"));

    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("a.mp3")), current("-1"), durationText("-1"),
                                    playingPath(url("a.mp3")), isPlaying(false), slider(0), mainFileName("a")));
    EXPECT_THAT(dialogs.alerts, ElementsAre("You need to redo Add Operation for mp3:a.mp3 (" + url("a.mp3") + ")"));
    EXPECT_TRUE(entry->canNotUseNow);
    ASSERT_NE(player.mp3Player(), nullptr);
    EXPECT_EQ(players.last()->path, dir.file("moved-a.mp3"));

    player.play();

    EXPECT_THAT(sent(), ElementsAre(isPlaying(true)));
    EXPECT_TRUE(players.last()->playing);
}

TEST_F(TransportTest, PlayItemOfTheCurrentItemKeepsPlayingAndReloadsTheLyrics) {
    addSong("a.mp3");
    playing("a.mp3");
    players.last()->position = 30;
    addLyrics("a.lrc", "[00:01.00]arrived later\n");

    player.playItem(url("a.mp3"));

    EXPECT_THAT(sent(), ElementsAre(isPlaying(true)));
    EXPECT_EQ(players.tracks.size(), 1u);
    EXPECT_EQ(players.last()->position, 30);
    EXPECT_TRUE(players.last()->playing);
    EXPECT_THAT(timelineTexts(player), ElementsAre("arrived later"));
}

TEST_F(TransportTest, PlayItemOfAnUnknownPathStopsTheTrackAndLoadsThatPathsLyrics) {
    addSong("a.mp3");
    playing("a.mp3");
    auto previous = players.last();
    addLyrics("elsewhere.lrc", "[00:02.00]found\n");

    player.playItem(url("elsewhere.mp3"));

    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("elsewhere.mp3"))));
    EXPECT_EQ(previous->calls.back(), "stop");
    EXPECT_TRUE(previous->destroyed);
    EXPECT_EQ(player.mp3Player(), nullptr);
    EXPECT_THAT(timelineTexts(player), ElementsAre("found"));
}

TEST_F(TransportTest, PauseWithoutATrackStillReportsNotPlaying) {
    player.pause();
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
}

TEST_F(TransportTest, TheStartUsesTheCurrentSpeed) {
    addSong("a.mp3");
    player.setSpeedIdx(5);
    playing("a.mp3");
    EXPECT_FLOAT_EQ(players.last()->rate, 1.5f);
}

TEST_F(TransportTest, PlayAndPlayItemRecordTheOutputDevice) {
    addSong("a.mp3");
    device.id = 7;
    player.play();
    EXPECT_EQ(player.recordedOutputDevice(), 7u);
    device.id = 9;
    player.playItem(url("a.mp3"));
    EXPECT_EQ(player.recordedOutputDevice(), 9u);
}

// Which item Next and Previous play, by mode and by where the current item stands.
struct StepCase {
    const char* name;
    const char* mode;
    int currentIndex;  // -1: no current item
    bool forward;
    int expectedIndex;  // -1: nothing happens
};

class StepByModeTest : public TransportTest, public ::testing::WithParamInterface<StepCase> {};

TEST_P(StepByModeTest, PlaysTheItemOfTheMode) {
    const StepCase& c = GetParam();
    const std::vector<std::string> names{"a.mp3", "b.mp3", "c.mp3"};
    for (const auto& name : names) addSong(name);
    if (c.currentIndex >= 0) playing(names[static_cast<std::size_t>(c.currentIndex)]);
    view->playMode = c.mode;
    nextRandom = 7;  // 7 % 3 == 1
    const std::size_t openedBefore = players.openedPaths.size();

    c.forward ? player.playNext() : player.playPrevious();

    std::vector<std::string> scripts = sent();
    if (c.expectedIndex < 0) {
        EXPECT_THAT(scripts, IsEmpty());
        EXPECT_EQ(players.openedPaths.size(), openedBefore);
    } else if (c.expectedIndex == c.currentIndex) {
        EXPECT_THAT(scripts, ElementsAre(isPlaying(true))) << "the current item resumes";
    } else {
        EXPECT_EQ(view->playingFilePath, url(names[static_cast<std::size_t>(c.expectedIndex)]));
        EXPECT_EQ(players.openedPaths.back(), dir.file(names[static_cast<std::size_t>(c.expectedIndex)]));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, StepByModeTest,
    ::testing::Values(StepCase{"CycleNextFromMiddle", "cycle", 1, true, 2},
                      StepCase{"CycleNextFromLastWraps", "cycle", 2, true, 0},
                      StepCase{"CycleNextWithoutCurrent", "cycle", -1, true, 0},
                      StepCase{"CyclePreviousFromFirstWraps", "cycle", 0, false, 2},
                      StepCase{"CyclePreviousWithoutCurrent", "cycle", -1, false, 2},
                      StepCase{"CyclePreviousFromMiddle", "cycle", 2, false, 1},
                      StepCase{"SequenceNextFromFirst", "sequence", 0, true, 1},
                      StepCase{"SequenceNextFromLastStops", "sequence", 2, true, -1},
                      StepCase{"SequenceNextWithoutCurrent", "sequence", -1, true, -1},
                      StepCase{"SequencePreviousFromFirstReplaysIt", "sequence", 0, false, 0},
                      StepCase{"SequencePreviousFromLast", "sequence", 2, false, 1},
                      StepCase{"SequencePreviousWithoutCurrent", "sequence", -1, false, 2},
                      StepCase{"RandomNext", "random", 0, true, 1},
                      StepCase{"RandomPreviousMayDrawTheCurrent", "random", 1, false, 1},
                      StepCase{"UnknownModeNext", "shuffle", 0, true, -1},
                      StepCase{"UnknownModePrevious", "shuffle", 0, false, -1}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(TransportTest, StepsInAnEmptyListDoNothingInEveryMode) {
    for (const char* mode : {"cycle", "sequence", "random"}) {
        view->playMode = mode;
        player.playNext();
        player.playPrevious();
        player.randomPick();
        EXPECT_THAT(sent(), IsEmpty()) << mode;
    }
}

TEST_F(TransportTest, EndOfTheLastTrackInCycleStartsTheFirst) {
    addSong("a.mp3");
    addSong("b.mp3");
    playing("b.mp3");

    players.last()->finish();

    std::vector<std::string> scripts = sent();
    ASSERT_FALSE(scripts.empty());
    EXPECT_EQ(scripts.front(), isPlaying(false));
    EXPECT_EQ(view->playingFilePath, url("a.mp3"));
    EXPECT_TRUE(players.last()->playing);
}

TEST_F(TransportTest, EndOfTheLastTrackInSequenceLeavesItFinishedAndAPlayStartsItAgain) {
    addSong("a.mp3");
    playing("a.mp3");
    view->playMode = "sequence";
    auto track = players.last();

    track->finish();

    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
    EXPECT_FALSE(track->destroyed);
    EXPECT_TRUE(view->isPlaying) << "the end leaves the flag as it was";

    player.play();
    EXPECT_THAT(sent(), ElementsAre(isPlaying(true)));
    EXPECT_TRUE(track->playing);
    EXPECT_EQ(track->position, 0);
}

TEST_F(TransportTest, AnEndReportedTwiceByOnePlayerCountsOnce) {
    addSong("a.mp3");
    playing("a.mp3");
    view->playMode = "sequence";

    players.last()->finish();
    players.last()->finish();

    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
}

TEST_F(TransportTest, ALateEndOfAReplacedTrackIsDropped) {
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3"}) addSong(name);
    playing("a.mp3");
    auto lateEnd = players.last()->onEnd;
    playing("b.mp3");

    lateEnd();

    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(view->playingFilePath, url("b.mp3"));
    EXPECT_TRUE(players.last()->playing);
}

TEST_F(TransportTest, AFinishedTrackStartedAgainCanEndAgain) {
    addSong("a.mp3");
    playing("a.mp3");
    view->playMode = "sequence";
    players.last()->finish();
    player.play();
    sent();
    view->playMode = "cycle";

    players.last()->finish();

    EXPECT_EQ(sent().front(), isPlaying(false));
    EXPECT_EQ(players.tracks.size(), 1u) << "cycle replays the only item, which resumes it";
    EXPECT_TRUE(players.last()->playing);
}

TEST_F(TransportTest, ChangeModeCyclesThroughTheThreeAndKeepsAnUnknownMode) {
    const std::vector<std::pair<std::string, std::string>> steps{
        {"cycle", "random"}, {"random", "sequence"}, {"sequence", "cycle"}, {"shuffle", "shuffle"}};
    for (const auto& [before, after] : steps) {
        view->playMode = before;
        player.changeMode();
        EXPECT_EQ(view->playMode, after);
        EXPECT_THAT(sent(), ElementsAre("setMode(\"" + after + "\");"));
    }
}

TEST_F(TransportTest, WithoutAMainViewNothingIsTriedOrSent) {
    addSong("a.mp3");
    view.reset();

    player.play();
    player.playNext();
    player.pause();
    player.changeMode();

    EXPECT_THAT(players.openedPaths, IsEmpty());
    EXPECT_THAT(sent(), IsEmpty());
}

}  // namespace
}  // namespace tunelark::test
