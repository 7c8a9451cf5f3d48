#include "EngineFixture.h"
#include "engine/PlayerHolder.h"
#include "engine/OutputDeviceWatch.h"
#include "engine/PlaybackClock.h"
#include "engine/TimeText.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cmath>
#include <functional>

namespace tunelark::test {
namespace {

using namespace ::testing;

class EngineTest : public EngineFixture {
protected:
    EngineTest() { seams.mainWindowVisible = [this] { return shown; }; }
    // A playing track of 200 s with lyric lines at 10, 20, 30 and 40 s.
    std::shared_ptr<FakeTrack> start() {
        addSong("song.mp3");
        addLyrics("song.lrc", "[00:10.00]A\n[00:20.00]B\n[00:30.00]C\n[00:40.00]D\n");
        player.playItem(url("song.mp3"));
        sent();
        return players.last();
    }
    bool shown = true;
    // The page calls that a change of the output device leads to within 0.35 s, the clock's ticks left out.
    std::vector<std::string> sentAfterDeviceChange(const std::function<void()>& change) {
        sent();
        change();
        queue.advance(std::chrono::milliseconds(350));
        auto s = sent();
        std::erase_if(s, [](auto& c) { return c.rfind("setCurrent", 0) == 0 || c.rfind("setSlider", 0) == 0; });
        return s;
    }

    PlayerUtil player{deps(), seams};
    PlaybackClock clock{player};
};

// Only Play item sends the slider on a start; only Play sends an empty name on a failure.
TEST_F(EngineTest, PlayAndPlayItemReportStartsAndFailuresInTheirOwnOrder) {
    auto lost = addSong("lost.mp3");
    lost->bookmark = Bytes{'x'};
    addSong("a.b.mp3");
    player.play();
    EXPECT_THAT(sent(), ElementsAre(isPlaying(true), playingPath(url("a.b.mp3")), current("00:00"),
                                    durationText("03:20"), mainFileName("a.b")));
    EXPECT_THAT(dialogs.alerts,
                ElementsAre("You need to redo Add Operation for mp3:lost.mp3 (" + url("lost.mp3") + ")"));
    EXPECT_TRUE(lost->canNotUseNow && !store.hasChanges());
    player.play();
    EXPECT_THAT(sent(), IsEmpty()) << "already playing";
    addSong("c.mp3");
    player.playItem(url("c.mp3"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("c.mp3")), isPlaying(true),
                                    playingPath(url("c.mp3")), current("00:00"), durationText("03:20"), slider(0),
                                    mainFileName("c")));

    addSong("bad.mp3");
    players.refusingPlay.insert(dir.file("bad.mp3"));
    player.playItem(url("bad.mp3"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), playingPath(url("bad.mp3")), current("-1"), durationText("-1"),
                                    playingPath(url("bad.mp3")), isPlaying(false), slider(0), mainFileName("bad")));
    player.play();
    EXPECT_THAT(sent(), ElementsAre(playingPath(""), isPlaying(false), current("-1"), durationText("-1"), slider(0),
                                    mainFileName(""))) << "nothing follows the last item";
}

struct Step {  // by Next or Previous from an item to an item; -1: no current item, or nothing happens
    const char* mode;
    int from, to;
    bool next;
};
class StepByModeTest : public EngineTest, public WithParamInterface<Step> {};

TEST_P(StepByModeTest, PlaysTheItemOfTheMode) {
    const Step& c = GetParam();
    const std::string names[] = {"a.mp3", "b.mp3", "c.mp3"};
    for (const auto& name : names) addSong(name);
    if (c.from >= 0) player.playItem(url(names[c.from]));
    pageState.playMode = *playModeNamed(c.mode);
    nextRandom = 7;  // 7 % 3 == 1
    sent();
    const auto opened = players.openedPaths.size();
    c.next ? player.playNext() : player.playPrevious();
    if (c.to < 0) EXPECT_TRUE(sent().empty() && players.openedPaths.size() == opened);
    else if (c.to == c.from) EXPECT_THAT(sent(), ElementsAre(isPlaying(true))) << "the current item resumes";
    else EXPECT_EQ(players.openedPaths.back(), dir.file(names[c.to]));
}

INSTANTIATE_TEST_SUITE_P(Modes, StepByModeTest,
                         Values(Step{"cycle", 2, 0, true}, Step{"cycle", -1, 0, true}, Step{"cycle", 0, 2, false},
                                Step{"cycle", -1, 2, false}, Step{"sequence", 2, -1, true},
                                Step{"sequence", -1, -1, true}, Step{"sequence", 0, 0, false},
                                Step{"sequence", -1, 2, false}, Step{"random", 1, 1, false},
                                Step{"sequence", 0, 1, true}));

TEST_F(EngineTest, TheEndOfATrackStepsByModeOnceAndALateEndOfAReplacedTrackIsDropped) {
    player.playNext();  // an empty list: nothing to draw from
    addSong("a.mp3");
    addSong("b.mp3");
    player.playItem(url("b.mp3"));
    auto lateEnd = players.last()->onEnd;
    players.last()->finish();
    EXPECT_EQ(pageState.playingFilePath, url("a.mp3")) << "cycle wraps";
    sent();
    lateEnd();
    EXPECT_THAT(sent(), IsEmpty());
    pageState.playMode = PlayMode::sequence;
    player.playItem(url("b.mp3"));
    sent();
    auto track = players.last();
    track->finish();
    track->finish();
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false))) << "one end, and nothing after the last item";
}

// A file cut or an output gone while a track plays: the item stays current and is reported as a file
// that cannot be played, with no alert and no step to the next item.
TEST_F(EngineTest, AnErrorMidTrackDropsThePlayerKeepsTheItemAndReportsItNotPlayable) {
    addSong("a.mp3");
    addSong("b.live.mp3");
    player.playItem(url("a.mp3"));
    auto replaced = players.last();
    player.playItem(url("b.live.mp3"));
    auto track = players.last();
    track->advance(30);
    sent();
    replaced->fail("Disconnected: Entity killed");
    EXPECT_THAT(sent(), IsEmpty()) << "an error of a replaced player";
    EXPECT_EQ(player.mp3Player()->position(), 30);

    internal::CaptureStdout();
    track->fail("Internal data stream error.");
    const std::string console = internal::GetCapturedStdout();
    EXPECT_THAT(sent(), ElementsAre(current("-1"), durationText("-1"), playingPath(url("b.live.mp3")),
                                    isPlaying(false), slider(0), mainFileName("b.live")));
    EXPECT_THAT(console, StartsWith("Playback stopped: Internal data stream error.\n"));
    EXPECT_TRUE(track->destroyed && !player.mp3Player() && !pageState.isPlaying);
    EXPECT_EQ(pageState.playingFilePath, url("b.live.mp3"));
    EXPECT_EQ(players.openedPaths.size(), 2u) << "no skip to the next item";
    EXPECT_TRUE(dialogs.alerts.empty());
    track->finish();
    track->fail("again");
    EXPECT_THAT(sent(), IsEmpty()) << "the dropped player is heard no more";

    // The item left the play list while it played: its name comes from its path.
    player.playItem(url("a.mp3"));
    pageState.storedMp3Entities->clear();
    sent();
    players.last()->fail("Could not read from resource.");
    EXPECT_THAT(sent(), ElementsAre(current("-1"), durationText("-1"), playingPath(url("a.mp3")), isPlaying(false),
                                    slider(0), mainFileName("a")));
}

TEST_F(EngineTest, TheDeviceWatchPausesOnceWhenTheDeviceChangesAndResumesOnlyOnItsReturn) {
    PlayerHolder engine{deps()};
    OutputDeviceWatch watch{engine, device};
    watch.start(queue);
    addSong("a.mp3");
    engine.player().playItem(url("a.mp3"));
    auto watchFor = [&](unsigned int id) { return sentAfterDeviceChange([&] { device.id = id; }); };
    EXPECT_THAT(watchFor(0xB), ElementsAre(isPlaying(false)));
    EXPECT_THAT(watchFor(0xC), IsEmpty()) << "a second change neither pauses again nor resumes";
    EXPECT_THAT(watchFor(0xA), ElementsAre(isPlaying(true)));
}

// A device that tells of its changes: the same decisions, but the 0.07 s timer runs only until the
// change it was woken for has been acted on.
TEST_F(EngineTest, WithADeviceThatTellsOfItsChangesTheWatchDecidesAlikeAndRestsInBetween) {
    FakeReportingOutputDevice reporting;
    reporting.id = 0xA;
    PlayerHolder engine{PlayerDeps{queue, *view, store, dialogs, players, reporting, [] { return std::string("en-US"); }}};
    OutputDeviceWatch watch{engine, reporting};
    engine.seams().outputDeviceRecorded = [&] { watch.wake(); };
    watch.start(queue);
    EXPECT_TRUE(watch.looking());
    queue.advance(std::chrono::milliseconds(100));
    EXPECT_FALSE(watch.looking()) << "nothing plays: one look decides, then rest";
    addSong("a.mp3");
    engine.player().playItem(url("a.mp3"));
    EXPECT_TRUE(watch.looking()) << "a play start records the device: look again";
    queue.advance(std::chrono::milliseconds(100));
    EXPECT_FALSE(watch.looking());
    EXPECT_EQ(watch.memory(), OutputDeviceWatch::PausedByDeviceChange::unknown);

    auto watchFor = [&](unsigned int id) {
        auto s = sentAfterDeviceChange([&] {
            reporting.change(id);
            EXPECT_TRUE(watch.looking());
        });
        EXPECT_FALSE(watch.looking()) << "rests once the change is acted on";
        return s;
    };
    EXPECT_THAT(watchFor(0xB), ElementsAre(isPlaying(false)));
    EXPECT_THAT(watchFor(0xC), IsEmpty()) << "a second change neither pauses again nor resumes";
    EXPECT_THAT(watchFor(0xA), ElementsAre(isPlaying(true)));
    EXPECT_THAT(watchFor(0xB), ElementsAre(isPlaying(false))) << "resumed, it pauses again at the next change";
}

TEST_F(EngineTest, LyricAlertsNameTheFileAndTheStoredCharsetAndTheWindowIsCleared) {
    pageState.playingFilePath = url("a.mp3");
    auto stale = addLyrics("a.lrc", "[00:01.00]still readable\n");
    std::filesystem::rename(dir.file("a.lrc"), dir.file("renamed.lrc"));
    player.loadLyrics();
    queue.drain();
    EXPECT_TRUE(player.timeline().empty() && stale->canNotUseNow && !store.hasChanges());
    pageState.storedLrcEntities->clear();
    lyricTexts.clear();
    addLyrics("a.lrc", "[00:01.00]\xff\xfe broken\n", "GB18030");
    player.loadLyrics();
    queue.drain();
    EXPECT_THAT(lyricTexts, ElementsAre(""));
    EXPECT_THAT(dialogs.alerts, ElementsAre("You need to redo Add Operation for lrc:a.lrc (" + url("a.lrc") + ")",
                                            "Can not open lrc file:a.lrc in charset:GB18030 (" + url("a.lrc") + ")"));

    // Opening a named pipe for reading blocks until a writer comes, which would hold the main thread.
    pageState.storedLrcEntities->at(0)->charset.reset();
    std::filesystem::remove(dir.file("a.lrc"));
    ASSERT_EQ(mkfifo(dir.file("a.lrc").c_str(), 0644), 0);
    player.loadLyrics();
    queue.drain();
    EXPECT_EQ(dialogs.alerts.back(), "Can not open lrc file:a.lrc in charset:utf8 (" + url("a.lrc") + ")");
}

TEST_F(EngineTest, TicksSendTheTimeTheSliderWhenItCanAndTheLinesOfTheRowMode) {
    EXPECT_THAT((std::vector{timeText(83.9), timeText(3725), timeText(7500), timeText(-3), timeText(NAN)}),
                ElementsAre("01:23", "62:05", "125:00", "00:00", "00:00"));
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("-1"))) << "no track";
    auto track = start();
    track->position = 50;
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("00:50"), slider(2500)));
    shown = false;
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("00:50"))) << "main window hidden";
    shown = true;
    track->duration = NAN;
    clock.tick();
    EXPECT_THAT(sent(), ElementsAre(current("00:50"))) << "unusable duration";

    lyricTexts.clear();
    for (auto [rows, position] : {std::pair{2, 5.0}, {2, 35.0}, {3, 25.0}}) {
        pageState.displayingRowNum = rows;
        track->position = position;
        clock.tick();
    }
    queue.drain();
    EXPECT_THAT(lyricTexts, ElementsAre("A", "B\nC")) << "line 0 alone; 3 rows: none";
}

TEST_F(EngineTest, SpeedStopsAtBothEndsResumesOnlyAPlayingTrackAndCarriesToTheNext) {
    auto track = start();
    for (int i = 0; i < 5; ++i) player.speedUp();
    auto scripts = sent();
    EXPECT_EQ(std::count(scripts.begin(), scripts.end(), isPlaying(true)), 4) << "one per step taken";
    std::erase_if(scripts, [](auto& s) { return s.rfind("setSpeed", 0) != 0; });
    EXPECT_THAT(scripts, ElementsAre(speedText("1.25"), speedText("1.50"), speedText("1.75"), speedText("2.0"),
                                     speedText("2.0")));
    EXPECT_FLOAT_EQ(track->rate, 2.0f);
    player.pause();
    track->calls.clear();
    for (int i = 0; i < 8; ++i) player.speedDown();
    EXPECT_EQ(sent().back(), speedText("0.25"));
    EXPECT_EQ(track->calls, std::vector<std::string>(7, "setRate")) << "a paused track only takes the rate";
    addSong("next.mp3");
    player.playItem(url("next.mp3"));
    EXPECT_FLOAT_EQ(players.last()->rate, 0.25f);
}

TEST_F(EngineTest, SeekResumesAPausedTrackAndIgnoresNumbersAndDurationsItCannotUse) {
    player.seekPercent(5000);
    EXPECT_THAT(sent(), IsEmpty()) << "no track";
    auto track = start();
    player.pause();
    player.seekPercent(5000);
    EXPECT_TRUE(track->playing && track->position == 100) << "a seek resumes a paused track";
    player.seekPercent(2500.5);
    EXPECT_NEAR(track->position, 50.01, 1e-9);
    player.seekPercent(1e3);
    sent();
    for (double percent : {std::nan(""), HUGE_VAL, -HUGE_VAL}) player.seekPercent(percent);
    track->duration = 0;
    player.seekPercent(5000);
    EXPECT_EQ(track->position, 20);
    EXPECT_THAT(sent(), IsEmpty());
}

}  // namespace
}  // namespace tunelark::test
