#include "DesktopFixture.h"
#include "desktop/MprisValues.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace tunelark::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

std::string mode(const std::string& m) { return "setMode(\"" + m + "\");"; }

class MediaPlayer2Test : public DesktopFixture {
protected:
    // Plays an item as the page's double click does and forgets what that sent.
    void playing(const std::string& fileName) {
        operations.playItem(url(fileName));
        sent();
    }
    std::shared_ptr<FakeTrack> track() { return players.last(); }
    std::vector<std::string> changedNames(std::size_t index) {
        std::vector<std::string> names;
        for (const auto& [name, value] : bus.changes.at(index).values) names.push_back(name);
        return names;
    }
    std::vector<std::int64_t> seekedPositions() {
        std::vector<std::int64_t> positions;
        for (const auto& signal : bus.emitted) {
            if (signal.name == "Seeked") positions.push_back(std::get<std::int64_t>(signal.args.at(0)));
        }
        return positions;
    }
};

TEST_F(MediaPlayer2Test, BeforeAnyTrackTheStateIsStoppedWithNoTrackAndTheEngineIsNotCreated) {
    EXPECT_EQ(read<std::string>("PlaybackStatus"), "Stopped");
    EXPECT_EQ(metadata(), (BusDict{{"mpris:trackid", BusObjectPath{kNoTrackId}}}));
    EXPECT_EQ(read<std::int64_t>("Position"), 0);
    EXPECT_EQ(read<double>("Rate"), 1.0);
    EXPECT_EQ(read<std::string>("LoopStatus"), "Playlist");
    EXPECT_FALSE(read<bool>("Shuffle"));
    for (const char* flag : {"CanPlay", "CanPause", "CanSeek", "CanGoNext", "CanGoPrevious"}) {
        EXPECT_FALSE(read<bool>(flag)) << flag;
    }
    EXPECT_TRUE(read<bool>("CanControl"));
    EXPECT_EQ(read<double>("MinimumRate"), 0.25);
    EXPECT_EQ(read<double>("MaximumRate"), 2.0);
    EXPECT_FALSE(property("NoSuchProperty").has_value());
    EXPECT_FALSE(engine.created()) << "reading the state must not start the engine and its clock";
}

TEST_F(MediaPlayer2Test, APlayingTrackWithLyricsShowsItsMetadataAndPosition) {
    addSong("Song One.mp3");
    const std::string lyrics = "[ti:One]\n[00:01.00]first line\n[00:02.50]second line\n";
    addLyrics("Song One.lrc", lyrics);
    playing("Song One.mp3");
    track()->position = 12.5;

    const BusDict values = metadata();
    EXPECT_EQ(values.at("mpris:trackid"), BusScalar(BusObjectPath{trackIdFor(url("Song One.mp3"))}));
    EXPECT_EQ(values.at("mpris:length"), BusScalar(std::int64_t{200'000'000}));
    EXPECT_EQ(values.at("xesam:title"), BusScalar(std::string("Song One")));
    EXPECT_EQ(values.at("xesam:url"), BusScalar(url("Song One.mp3")));
    EXPECT_EQ(values.at("xesam:asText"), BusScalar(lyrics));
    EXPECT_EQ(read<std::string>("PlaybackStatus"), "Playing");
    EXPECT_EQ(read<std::int64_t>("Position"), 12'500'000);
    for (const char* flag : {"CanPlay", "CanPause", "CanSeek", "CanGoNext", "CanGoPrevious"}) {
        EXPECT_TRUE(read<bool>(flag)) << flag;
    }
}

TEST_F(MediaPlayer2Test, ATrackWithoutLyricsOrThatCannotPlayHasNoTextOrLength) {
    addSong("plain.mp3");
    addSong("broken.mp3");
    players.unplayable.insert(dir.file("broken.mp3"));
    playing("plain.mp3");
    EXPECT_EQ(metadata().count("xesam:asText"), 0u);

    playing("broken.mp3");
    const BusDict values = metadata();
    EXPECT_EQ(values.at("xesam:title"), BusScalar(std::string("broken")));
    EXPECT_EQ(values.count("mpris:length"), 0u);
    EXPECT_EQ(read<std::string>("PlaybackStatus"), "Stopped");
    EXPECT_FALSE(read<bool>("CanSeek"));
}

TEST_F(MediaPlayer2Test, TransportMethodsRunThePageOperationsAndReportToThePage) {
    addSong("a.mp3");
    addSong("b.mp3");

    EXPECT_FALSE(call("Play"));
    EXPECT_THAT(sent(), Contains(playingPath(url("a.mp3"))));
    EXPECT_EQ(read<std::string>("PlaybackStatus"), "Playing");

    track()->position = 30;
    EXPECT_FALSE(call("PlayPause"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
    EXPECT_EQ(read<std::string>("PlaybackStatus"), "Paused");
    EXPECT_FALSE(call("PlayPause"));
    EXPECT_THAT(sent(), Contains(isPlaying(true)));
    EXPECT_EQ(track()->position, 30) << "resumed where it paused";

    EXPECT_FALSE(call("Stop"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
    EXPECT_FALSE(track()->destroyed) << "Stop pauses, as the page's pause does";

    EXPECT_FALSE(call("Next"));
    EXPECT_THAT(sent(), Contains(playingPath(url("b.mp3"))));
    EXPECT_FALSE(call("Previous"));
    EXPECT_THAT(sent(), Contains(playingPath(url("a.mp3"))));
    EXPECT_FALSE(call("Pause"));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));

    const auto unknown = call("Rewind");
    ASSERT_TRUE(unknown);
    EXPECT_EQ(unknown->name, "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(MediaPlayer2Test, NextFollowsThePlayModeAndCanGoNextSaysWhetherItWillMove) {
    addSong("a.mp3");
    addSong("b.mp3");
    view->playMode = "sequence";
    playing("b.mp3");
    EXPECT_FALSE(read<bool>("CanGoNext"));
    EXPECT_TRUE(read<bool>("CanGoPrevious"));
    call("Next");
    EXPECT_THAT(sent(), IsEmpty()) << "sequence ends after the last item";

    view->playMode = "cycle";
    EXPECT_TRUE(read<bool>("CanGoNext"));
    call("Next");
    EXPECT_THAT(sent(), Contains(playingPath(url("a.mp3"))));
}

TEST_F(MediaPlayer2Test, SeekMovesByTheOffsetThroughThePageSeekAndAnnouncesIt) {
    addSong("a.mp3");
    addSong("b.mp3");
    playing("a.mp3");
    mpris.setSignals(&bus);
    track()->position = 50;

    call("Seek", {std::int64_t{30'000'000}});
    EXPECT_DOUBLE_EQ(track()->position, 80);
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false), isPlaying(true)));
    EXPECT_THAT(seekedPositions(), ElementsAre(80'000'000));

    call("Seek", {std::int64_t{-500'000'000}});
    EXPECT_DOUBLE_EQ(track()->position, 0) << "before the start seeks to the start";

    call("Seek", {std::int64_t{200'000'000}});
    EXPECT_THAT(sent(), Contains(playingPath(url("b.mp3")))) << "past the end acts as Next";

    const auto wrongType = call("Seek", {std::string("ten")});
    ASSERT_TRUE(wrongType);
    EXPECT_EQ(wrongType->name, "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(MediaPlayer2Test, SetPositionIgnoresOtherTracksAndTimesOutsideTheTrack) {
    addSong("a.mp3");
    addSong("b.mp3");
    playing("a.mp3");
    mpris.setSignals(&bus);
    track()->position = 10;
    const BusObjectPath current{trackIdFor(url("a.mp3"))};

    call("SetPosition", {BusObjectPath{trackIdFor(url("b.mp3"))}, std::int64_t{60'000'000}});
    call("SetPosition", {current, std::int64_t{-1}});
    call("SetPosition", {current, std::int64_t{200'000'001}});
    queue.drain();
    EXPECT_DOUBLE_EQ(track()->position, 10);
    EXPECT_THAT(track()->calls, Not(Contains("setPosition")));

    call("SetPosition", {current, std::int64_t{120'000'000}});
    queue.drain();
    EXPECT_DOUBLE_EQ(track()->position, 120);
    EXPECT_THAT(seekedPositions(), ElementsAre(120'000'000));
}

TEST_F(MediaPlayer2Test, LyricJumpsAndSeeksFromThePageAreAnnouncedAsSeeked) {
    addSong("a.mp3");
    addLyrics("a.lrc", "[00:10.00]one\n[00:20.00]two\n[00:30.00]three\n");
    playing("a.mp3");
    mpris.setSignals(&bus);
    track()->position = 15;

    operations.playNextLyric();
    queue.drain();
    operations.playPrevLyric();
    queue.drain();
    operations.setCurrentPercent(2500);
    queue.drain();

    EXPECT_THAT(seekedPositions(), ElementsAre(20'000'000, 10'080'000, 50'000'000));
}

TEST_F(MediaPlayer2Test, RateTakesTheNearestSpeedThroughThePageStepsAndZeroPauses) {
    addSong("a.mp3");
    playing("a.mp3");

    EXPECT_FALSE(set("Rate", 1.6));
    EXPECT_THAT(sent(), Contains(speedText("1.50")));
    EXPECT_FLOAT_EQ(track()->rate, 1.5f);
    EXPECT_EQ(read<double>("Rate"), 1.5);
    EXPECT_TRUE(track()->playing);

    set("Rate", 0.1);
    auto scripts = sent();
    ASSERT_FALSE(scripts.empty());
    EXPECT_EQ(scripts.back(), speedText("0.25"));
    set("Rate", 40.0);
    EXPECT_EQ(sent().back(), speedText("2.0"));
    set("Rate", 2.0);
    EXPECT_THAT(sent(), IsEmpty()) << "already at that speed";

    for (double bad : {-1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const auto error = set("Rate", bad);
        ASSERT_TRUE(error) << bad;
        EXPECT_EQ(error->name, "org.freedesktop.DBus.Error.InvalidArgs");
    }
    EXPECT_EQ(read<double>("Rate"), 2.0);
    EXPECT_TRUE(set("Rate", std::string("fast")));

    EXPECT_FALSE(set("Rate", 0.0));
    EXPECT_THAT(sent(), ElementsAre(isPlaying(false)));
    EXPECT_FALSE(track()->playing);
}

TEST_F(MediaPlayer2Test, ShuffleAndLoopStatusSetThePlayModeThroughThePageModeChange) {
    struct Case {
        std::string from;
        std::string property;
        BusValue value;
        std::string to;
    };
    const std::vector<Case> cases{
        {"cycle", "Shuffle", true, "random"},          {"sequence", "Shuffle", true, "random"},
        {"random", "Shuffle", false, "cycle"},         {"sequence", "Shuffle", false, "sequence"},
        {"cycle", "LoopStatus", std::string("None"), "sequence"},
        {"random", "LoopStatus", std::string("None"), "sequence"},
        {"sequence", "LoopStatus", std::string("Playlist"), "cycle"},
        {"random", "LoopStatus", std::string("Playlist"), "random"},
    };
    for (const auto& c : cases) {
        view->playMode = c.from;
        sent();
        EXPECT_FALSE(set(c.property, c.value)) << c.from << " " << c.property;
        EXPECT_EQ(view->playMode, c.to) << c.from << " " << c.property;
        auto scripts = sent();
        if (c.from == c.to) {
            EXPECT_THAT(scripts, IsEmpty()) << c.from << " " << c.property;
        } else {
            ASSERT_FALSE(scripts.empty());
            EXPECT_EQ(scripts.back(), mode(c.to)) << c.from << " " << c.property;
        }
    }

    view->playMode = "cycle";
    const auto track = set("LoopStatus", std::string("Track"));
    ASSERT_TRUE(track);
    EXPECT_EQ(track->name, "org.freedesktop.DBus.Error.NotSupported");
    const auto other = set("LoopStatus", std::string("Forever"));
    ASSERT_TRUE(other);
    EXPECT_EQ(other->name, "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(view->playMode, "cycle");
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(MediaPlayer2Test, ThePlayModeReadsAsLoopStatusAndShuffle) {
    const std::vector<std::tuple<std::string, std::string, bool>> table{
        {"cycle", "Playlist", false}, {"random", "Playlist", true}, {"sequence", "None", false}};
    for (const auto& [playMode, loop, shuffle] : table) {
        view->playMode = playMode;
        EXPECT_EQ(read<std::string>("LoopStatus"), loop) << playMode;
        EXPECT_EQ(read<bool>("Shuffle"), shuffle) << playMode;
    }
}

TEST_F(MediaPlayer2Test, ChangesFromAnySideAreAnnouncedOnceWithOnlyWhatChanged) {
    addSong("a.mp3");
    addSong("b.mp3");
    mpris.setSignals(&bus);

    queue.advance(MediaPlayer2::kRefreshInterval);
    EXPECT_THAT(bus.changes, IsEmpty()) << "nothing changed";

    engine.get().changeMode();  // the page's mode button
    queue.advance(MediaPlayer2::kRefreshInterval);
    ASSERT_EQ(bus.changes.size(), 1u);
    EXPECT_EQ(bus.changes[0].interfaceName, kMprisPlayerInterface);
    EXPECT_EQ(bus.changes[0].values, (BusProperties{{"Shuffle", true}}));

    operations.playItem(url("a.mp3"));  // the page's double click
    queue.drain();
    ASSERT_EQ(bus.changes.size(), 2u) << "a start is announced at once, not at the next interval";
    EXPECT_THAT(changedNames(1), UnorderedElementsAre("PlaybackStatus", "Metadata", "CanPause", "CanSeek"));
    EXPECT_EQ(bus.changes[1].values.at("PlaybackStatus"), BusValue(std::string("Playing")));

    track()->advance(5);
    queue.advance(MediaPlayer2::kRefreshInterval * 3);
    EXPECT_EQ(bus.changes.size(), 2u) << "the position moving is no change";

    engine.clock().speedUp();
    queue.drain();
    ASSERT_EQ(bus.changes.size(), 3u);
    EXPECT_EQ(bus.changes[2].values, (BusProperties{{"Rate", 1.25}}));

    mpris.setSignals(nullptr);
    engine.get().pause();
    queue.advance(MediaPlayer2::kRefreshInterval * 2);
    EXPECT_EQ(bus.changes.size(), 3u) << "nothing is sent once the signals are taken away";
}

TEST_F(MediaPlayer2Test, OpenUriAddsAndPlaysALocalFileOnly) {
    view->loaded = true;
    writeFile(dir.file("New Song.mp3"), "audio");

    EXPECT_FALSE(call("OpenUri", {url("New Song.mp3")}));
    queue.drain();
    auto stored = store.fetchMp3Entities();
    ASSERT_TRUE(stored && stored->size() == 1u);
    EXPECT_EQ((*stored)[0]->filePath, url("New Song.mp3"));
    EXPECT_EQ(view->playingFilePath, url("New Song.mp3"));
    EXPECT_EQ(read<std::string>("PlaybackStatus"), "Playing");

    for (const char* uri : {"http://example.invalid/a.mp3", "file://otherhost/a.mp3", "song.mp3"}) {
        const auto error = call("OpenUri", {std::string(uri)});
        ASSERT_TRUE(error) << uri;
        EXPECT_EQ(error->name, "org.freedesktop.DBus.Error.NotSupported") << uri;
    }
}

TEST_F(MediaPlayer2Test, TheRootInterfaceNamesThePlayerRaisesItAndQuitsAfterTheReply) {
    auto root = [this](const std::string& name) { return *mpris.readProperty(kMprisRootInterface, name); };
    EXPECT_EQ(root("Identity"), BusValue(std::string("Tunelark")));
    EXPECT_EQ(root("DesktopEntry"), BusValue(std::string("org.tunelark.Tunelark")));
    EXPECT_EQ(root("CanQuit"), BusValue(true));
    EXPECT_EQ(root("CanRaise"), BusValue(true));
    EXPECT_EQ(root("HasTrackList"), BusValue(false));
    EXPECT_EQ(root("SupportedUriSchemes"), BusValue(BusStrings{"file"}));
    EXPECT_EQ(root("SupportedMimeTypes"), BusValue(BusStrings{"audio/mpeg"}));

    EXPECT_FALSE(mpris.callMethod(kMprisRootInterface, "Raise", {}));
    EXPECT_EQ(raised, 1);
    EXPECT_FALSE(mpris.callMethod(kMprisRootInterface, "Quit", {}));
    EXPECT_EQ(quits, 0) << "the quit decision may show a dialog: it runs after the reply";
    queue.drain();
    EXPECT_EQ(quits, 1);

    EXPECT_TRUE(mpris.writeProperty(kMprisRootInterface, "Identity", std::string("Other")));
    EXPECT_TRUE(set("Volume", 0.5));
    EXPECT_EQ(read<double>("Volume"), 1.0);
}

}  // namespace
}  // namespace tunelark::test
