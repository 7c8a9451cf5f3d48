#include "EngineFixture.h"
#include "engine/Engine.h"
#include "engine/OutputDeviceWatch.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace tunelark::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr unsigned int kSpeakers = 0xA;
constexpr unsigned int kHeadphones = 0xB;
constexpr unsigned int kHdmi = 0xC;

class OutputDeviceWatchTest : public EngineFixture {
protected:
    std::shared_ptr<FakeTrack> startPlaying() {
        addSong("song.mp3");
        engine.get().playItem(fileUrlFromPath(dir.file("song.mp3")));
        return players.last();
    }

    // What a few runs of the watch on the 0.07 s timer send, without the clock's ticks.
    std::vector<std::string> watchFor(std::chrono::milliseconds time) {
        queue.advance(time);
        std::vector<std::string> scripts = sent();
        std::erase_if(scripts, [](const std::string& s) { return s.rfind("setCurrent", 0) == 0 || s.rfind("setSlider", 0) == 0; });
        return scripts;
    }

    Engine engine{deps()};
    OutputDeviceWatch watch{engine, device};
};

TEST_F(OutputDeviceWatchTest, TheEngineIsCreatedOnFirstUseWithItsClock) {
    EXPECT_FALSE(engine.created());
    EXPECT_EQ(queue.liveTimers(), 0);

    watch.check();

    EXPECT_TRUE(engine.created());
    EXPECT_EQ(queue.liveTimers(), 1);
    queue.advance(std::chrono::milliseconds(100));
    EXPECT_THAT(sent(), ElementsAre(current("-1")));
}

TEST_F(OutputDeviceWatchTest, AChangeAwayPausesOnceAndComingBackResumes) {
    watch.start(queue);
    auto track = startPlaying();
    sent();

    device.id = kHeadphones;
    EXPECT_THAT(watchFor(std::chrono::milliseconds(700)), ElementsAre(isPlaying(false)));
    EXPECT_FALSE(track->playing);
    EXPECT_EQ(std::count(track->calls.begin(), track->calls.end(), "pause"), 1);

    device.id = kSpeakers;
    EXPECT_THAT(watchFor(std::chrono::milliseconds(700)), ElementsAre(isPlaying(true)));
    EXPECT_TRUE(track->playing);
    EXPECT_EQ(watch.memory(), OutputDeviceWatch::PausedByDeviceChange::unknown);
}

TEST_F(OutputDeviceWatchTest, ASecondChangeNeitherPausesAgainNorResumes) {
    watch.start(queue);
    auto track = startPlaying();
    sent();

    device.id = kHeadphones;
    watchFor(std::chrono::milliseconds(140));
    device.id = kHdmi;
    EXPECT_THAT(watchFor(std::chrono::milliseconds(700)), IsEmpty());
    EXPECT_FALSE(track->playing);

    device.id = kSpeakers;
    EXPECT_THAT(watchFor(std::chrono::milliseconds(140)), ElementsAre(isPlaying(true)));
}

TEST_F(OutputDeviceWatchTest, NothingPlayingMeansNoPauseAndNoResume) {
    watch.start(queue);
    auto track = startPlaying();
    engine.get().pause();
    sent();

    device.id = kHeadphones;
    EXPECT_THAT(watchFor(std::chrono::milliseconds(350)), IsEmpty());
    device.id = kSpeakers;
    EXPECT_THAT(watchFor(std::chrono::milliseconds(350)), IsEmpty());
    EXPECT_FALSE(track->playing);
}

TEST_F(OutputDeviceWatchTest, AResumeRecordsTheDeviceInUse) {
    auto track = startPlaying();
    device.id = kHeadphones;
    watch.check();
    // The user presses play on the headphones: they become the recorded device.
    engine.get().play();
    watch.check();
    EXPECT_EQ(engine.get().recordedOutputDevice(), kHeadphones);
    EXPECT_TRUE(track->playing);

    device.id = kSpeakers;
    watch.check();
    EXPECT_FALSE(track->playing);
}

TEST_F(OutputDeviceWatchTest, StoppingTheWatchStopsItsTimer) {
    watch.start(queue);
    watch.check();
    EXPECT_EQ(queue.liveTimers(), 2);
    watch.stop();
    EXPECT_EQ(queue.liveTimers(), 1) << "the clock keeps running";
}

}  // namespace
}  // namespace tunelark::test
