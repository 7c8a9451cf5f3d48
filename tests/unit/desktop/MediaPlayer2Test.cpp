#include "desktop/MediaPlayer2Fixture.h"
#include "desktop/MprisIntrospection.h"
#include "desktop/MprisValues.h"

#include <gmock/gmock.h>

#include <cmath>
#include <regex>

namespace tunelark::test {
namespace {

TEST_F(MediaPlayer2Test, PlayModesReadAndSetAsLoopStatusAndShuffleThroughThePageModeChange) {
    const std::map<std::string, BusProperties> reads{{"cycle", {{"LoopStatus", "Playlist"}, {"Shuffle", false}}},
                                                     {"random", {{"LoopStatus", "Playlist"}, {"Shuffle", true}}},
                                                     {"sequence", {{"LoopStatus", "None"}, {"Shuffle", false}}}};
    struct Case { std::string from, property; BusValue value; std::string to, error = "none"; };
    for (const Case& c : {Case{"cycle", "Shuffle", true, "random"}, Case{"sequence", "Shuffle", true, "random"},
                          Case{"random", "Shuffle", false, "cycle"}, Case{"sequence", "Shuffle", false, "sequence"},
                          Case{"random", "LoopStatus", "None", "sequence"},
                          Case{"sequence", "LoopStatus", "Playlist", "cycle"},
                          Case{"random", "LoopStatus", "Playlist", "random"},
                          Case{"cycle", "LoopStatus", "Track", "cycle", "org.freedesktop.DBus.Error.NotSupported"},
                          Case{"cycle", "LoopStatus", "playlist", "cycle", kInvalidArgs}}) {
        pageState.playMode = *playModeNamed(c.from);
        sent();
        EXPECT_EQ(set(c.property, c.value), c.error) << c.from << " " << c.property;
        std::vector<std::string> scripts = sent();
        EXPECT_EQ(scripts.empty() ? "none" : scripts.back(), c.from == c.to ? "none" : "setMode(\"" + c.to + "\");");
        for (const auto& [property, value] : reads.at(c.to))
            EXPECT_EQ(mpris.readProperty(kMprisPlayerInterface, property), value) << c.to;
    }
}

TEST_F(MediaPlayer2Test, SeekAndSetPositionStayWithinTheCurrentTrackAndAreAnnounced) {
    auto track = players.last();
    track->position = 50;
    EXPECT_EQ(call("Seek", {std::int64_t{30'000'000}}), "none");
    EXPECT_THAT(sent(), testing::ElementsAre(isPlaying(false), isPlaying(true))) << "through the page's seek";
    call("Seek", {std::int64_t{-500'000'000}});
    sent();
    EXPECT_EQ(call("Seek", {"ten"}), kInvalidArgs);
    const BusObjectPath current{trackIdFor(url("a.mp3"))};
    track->position = 10;
    call("SetPosition", {BusObjectPath{trackIdFor(url("b.mp3"))}, std::int64_t{60'000'000}});
    call("SetPosition", {current, std::int64_t{-1}});
    call("SetPosition", {current, std::int64_t{200'000'001}});
    queue.drain();
    EXPECT_DOUBLE_EQ(track->position, 10) << "another track's id or a time outside the track is ignored";
    call("SetPosition", {current, std::int64_t{120'000'000}});
    queue.drain();
    std::vector<BusValue> seeked;
    for (const auto& signal : bus.emitted) seeked.push_back(signal.name == "Seeked" ? signal.args.at(0) : false);
    EXPECT_EQ(seeked, (std::vector<BusValue>{std::int64_t{80'000'000}, std::int64_t{0}, std::int64_t{120'000'000}}));
    call("Seek", {std::int64_t{200'000'000}});
    EXPECT_THAT(sent(), testing::Contains(playingPath(url("b.mp3")))) << "past the end acts as Next";
}

TEST_F(MediaPlayer2Test, ChangesAreAnnouncedWithOnlyWhatChanged) {
    const int timers = queue.liveTimers();
    players.last()->advance(5);
    queue.advance(MediaPlayer2::kRefreshInterval * 3);
    EXPECT_TRUE(bus.changes.empty()) << "the position moving is no change";
    EXPECT_EQ(queue.liveTimers(), timers - 1) << "the clock's ticks poll; the poll's own timer is gone";
    engine.player().changeMode();  // the page's mode button
    queue.advance(MediaPlayer2::kRefreshInterval);
    ASSERT_EQ(bus.changes.size(), 1u);
    EXPECT_EQ(bus.changes[0].values, (BusProperties{{"Shuffle", true}}));
}

// Every method and property the introspection data declares is answered: a method never as unknown, a
// property with a value, a settable one never as read-only, a read-only one always so.
TEST_F(MediaPlayer2Test, EveryDeclaredMemberHasARowAndOnlyTheDeclaredOnesCanBeSet) {
    const std::string& xml = mprisIntrospectionXml();
    const std::regex member(R"re(<(interface|method|property) name="([^"]+)"(?: type="[^"]+" access="(\w+)")?)re");
    std::string interfaceName;
    int methods = 0, properties = 0;
    for (auto it = std::sregex_iterator(xml.begin(), xml.end(), member); it != std::sregex_iterator(); ++it) {
        const std::string kind = (*it)[1], name = (*it)[2], access = (*it)[3];
        if (kind == "interface") {
            interfaceName = name;
        } else if (kind == "method") {
            ++methods;
            const auto error = mpris.callMethod(interfaceName, name, {});
            EXPECT_NE(error.value_or(BusError{}).name, "org.freedesktop.DBus.Error.UnknownMethod") << name;
        } else {
            ++properties;
            EXPECT_TRUE(mpris.readProperty(interfaceName, name).has_value()) << name;
            const auto error = mpris.writeProperty(interfaceName, name, BusStrings{}).value_or(BusError{}).name;
            EXPECT_EQ(error == "org.freedesktop.DBus.Error.PropertyReadOnly", access == "read") << name;
        }
    }
    EXPECT_EQ(std::pair(methods, properties), std::pair(11, 22));
    EXPECT_EQ(mpris.callMethod(kMprisRootInterface, "Play", {})->name, "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_FALSE(mpris.readProperty(kMprisRootInterface, "PlaybackStatus")) << "each interface has its own";
}

TEST(MprisValuesTest, TheNearestSpeedIsTheLowerOnATieAndNoneForRatesNotAboveZero) {
    for (auto [rate, index] : {std::pair{0.1, 0}, {1.125, 3}, {1.126, 4}, {40.0, 7}})
        EXPECT_EQ(nearestSpeedIdx(rate), index) << rate;
    for (double bad : {0.0, -1.0, double(NAN), double(INFINITY)}) EXPECT_EQ(nearestSpeedIdx(bad), std::nullopt) << bad;
}

}  // namespace
}  // namespace tunelark::test
