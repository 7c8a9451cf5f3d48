#include "desktop/ObservedAudioPlayer.h"

#include "fakes/FakeAudioPlayer.h"

#include <gmock/gmock.h>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;

class ObservedAudioPlayerTest : public ::testing::Test {
protected:
    ObservedAudioPlayerTest() {
        observed.setListener({[this] { events.push_back("position"); }, [this] { events.push_back("transport"); }});
    }
    FakeAudioPlayerFactory inner;
    ObservedAudioPlayerFactory observed{inner};
    std::vector<std::string> events;
};

TEST_F(ObservedAudioPlayerTest, EveryCallReachesThePlayerAndChangesAreTold) {
    auto player = observed.open("/music/a.mp3");
    ASSERT_NE(player, nullptr);
    auto track = inner.last();

    EXPECT_TRUE(player->play());
    player->enableRate(true);
    player->setRate(1.5f);
    player->setPosition(42);
    player->pause();
    player->stop();

    EXPECT_THAT(track->calls, ElementsAre("play", "enableRate", "setRate", "setPosition", "pause", "stop"));
    EXPECT_THAT(events, ElementsAre("transport", "transport", "position", "transport", "transport"));
    track->position = 12;
    track->playing = true;
    EXPECT_EQ(player->position(), 12);
    EXPECT_EQ(player->duration(), 200);
    EXPECT_TRUE(player->isPlaying());
}

TEST_F(ObservedAudioPlayerTest, AFileThatCannotBePlayedGivesNoPlayer) {
    inner.unplayable.insert("/music/bad.mp3");
    EXPECT_EQ(observed.open("/music/bad.mp3"), nullptr);
    EXPECT_TRUE(events.empty());
}

TEST_F(ObservedAudioPlayerTest, ANewListenerReachesPlayersOpenedBeforeAndAnEmptyOneSilencesThem) {
    auto player = observed.open("/music/a.mp3");
    int told = 0;
    observed.setListener({[&told] { ++told; }, nullptr});
    player->setPosition(1);
    player->play();
    EXPECT_EQ(told, 1);
    observed.setListener({});
    player->setPosition(2);
    EXPECT_EQ(told, 1);
}

TEST_F(ObservedAudioPlayerTest, TheEndIsToldFirstAndItsHandlerMayDestroyThePlayer) {
    auto player = observed.open("/music/a.mp3");
    auto track = inner.last();
    std::vector<std::string> order;
    observed.setListener({nullptr, [&order] { order.push_back("told"); }});
    player->setOnEnd([&] {
        order.push_back("end");
        player.reset();  // the engine drops a finished player when it opens the next one
    });

    track->finish();

    EXPECT_THAT(order, ElementsAre("told", "end"));
    EXPECT_EQ(player, nullptr);
    EXPECT_TRUE(track->destroyed);
}

}  // namespace
}  // namespace tunelark::test
