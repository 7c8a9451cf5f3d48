#include "platform/pulse/DefaultSinkTracker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace tunelark::test {
namespace {

using namespace ::testing;

// Records the tracker's questions; the test answers them when and in what order it likes.
struct ScriptedServer : SinkQuestions {
    void askServerInfo(std::uint64_t ticket) override { serverQuestions.push_back(ticket); }
    void askSinkInfo(std::uint64_t ticket, const std::string& sinkName) override {
        sinkQuestions.emplace_back(ticket, sinkName);
    }
    std::vector<std::uint64_t> serverQuestions;
    std::vector<std::pair<std::uint64_t, std::string>> sinkQuestions;
};

constexpr std::uint32_t kLaptop = 3, kUsb = 7;
const std::string laptop = "alsa_output.pci-0000_00_1f.3.analog-stereo";
const std::string usb = "alsa_output.usb-headset.analog-stereo";

class DefaultSinkTrackerTest : public Test {
protected:
    std::uint64_t askServer() {
        tracker.serverChanged();
        return server.serverQuestions.back();
    }
    // Answers the newest sink question, which must be about that sink.
    void answerSink(const std::string& name, std::uint32_t index, const std::string& port) {
        ASSERT_FALSE(server.sinkQuestions.empty());
        ASSERT_EQ(server.sinkQuestions.back().second, name);
        tracker.sinkInfoAnswered(server.sinkQuestions.back().first, SinkInfo{name, index, port});
    }
    void answerDefault(const std::string& name, std::uint32_t index, const std::string& port) {
        tracker.serverInfoAnswered(askServer(), name);
        answerSink(name, index, port);
    }
    // A change event of a sink; the server answers the question it leads to, if any.
    void sinkEvent(std::uint32_t index, const std::string& name, const std::string& port) {
        const auto asked = server.sinkQuestions.size();
        tracker.sinkChanged(index);
        if (server.sinkQuestions.size() > asked) answerSink(name, index, port);
    }

    ScriptedServer server;
    DefaultSinkTracker tracker{server};
};

// On a laptop the jack switches the default sink's port and keeps its name.
TEST_F(DefaultSinkTrackerTest, PluggingHeadphonesInSwitchesThePortAndThatIsAnotherDevice) {
    int changes = 0;
    tracker.setOnIdChanged([&] { ++changes; });
    answerDefault(laptop, kLaptop, "analog-output-speaker");
    EXPECT_EQ(changes, 1);
    const std::uint32_t speakers = tracker.id();
    EXPECT_NE(speakers, 0u);
    sinkEvent(kLaptop, laptop, "analog-output-headphones");
    EXPECT_NE(tracker.id(), speakers);
    EXPECT_EQ(tracker.sinkName(), laptop);
    EXPECT_EQ(tracker.portName(), "analog-output-headphones");
    const auto asked = server.sinkQuestions.size();
    tracker.sinkChanged(kUsb);
    EXPECT_EQ(server.sinkQuestions.size(), asked) << "another sink's changes ask nothing";
    sinkEvent(kLaptop, laptop, "analog-output-speaker");
    EXPECT_EQ(tracker.id(), speakers) << "unplugged: the first device again";
    sinkEvent(kLaptop, laptop, "analog-output-speaker");
    EXPECT_EQ(tracker.id(), speakers) << "a change that keeps the port (a volume step)";
    EXPECT_EQ(changes, 3) << "told of each new id, and only then";
}

TEST_F(DefaultSinkTrackerTest, AnOlderAnswerNeverOverwritesANewerOne) {
    answerDefault(laptop, kLaptop, "analog-output-speaker");
    const std::uint32_t speakers = tracker.id();
    tracker.sinkChanged(kLaptop);
    const std::uint64_t laptopQuestion = server.sinkQuestions.back().first;
    const std::uint64_t older = askServer(), newer = askServer();
    tracker.serverInfoAnswered(newer, usb);
    tracker.serverInfoAnswered(older, laptop);
    EXPECT_EQ(server.sinkQuestions.back().second, usb) << "the older server answer asks nothing";
    EXPECT_EQ(tracker.id(), speakers) << "the new default counts once its port is known";
    answerSink(usb, kUsb, "analog-output");
    const std::uint32_t headset = tracker.id();
    EXPECT_NE(headset, speakers);
    tracker.sinkInfoAnswered(laptopQuestion, SinkInfo{laptop, kLaptop, "analog-output-headphones"});
    EXPECT_EQ(tracker.id(), headset);
    EXPECT_EQ(tracker.sinkName(), usb);
}

TEST_F(DefaultSinkTrackerTest, UnknownWithoutAServerOrADefaultAndTheNameAloneForASinkThatIsGone) {
    EXPECT_EQ(tracker.id(), 0u);
    tracker.sinkChanged(kLaptop);
    EXPECT_THAT(server.sinkQuestions, IsEmpty()) << "no default sink to ask about";
    answerDefault(laptop, kLaptop, "analog-output-speaker");
    tracker.serverInfoAnswered(askServer(), "");
    EXPECT_EQ(tracker.id(), 0u) << "no default sink";
    tracker.serverInfoAnswered(askServer(), usb);
    tracker.sinkInfoAnswered(server.sinkQuestions.back().first, std::nullopt);
    EXPECT_EQ(tracker.id(), outputDeviceIdForSink(usb));
    const std::uint64_t pending = askServer();
    tracker.disconnected();
    EXPECT_EQ(tracker.id(), 0u);
    tracker.serverInfoAnswered(pending, laptop);
    EXPECT_EQ(tracker.id(), 0u) << "an answer from before the connection was lost";
    EXPECT_EQ(server.sinkQuestions.back().second, usb);
}

TEST(OutputDeviceIdTest, NameAndPortNeverReadAsAnotherNameAndPort) {
    EXPECT_NE(outputDeviceIdForSink("ab", "c"), outputDeviceIdForSink("a", "bc"));
    EXPECT_NE(outputDeviceIdForSink("ab", "c"), outputDeviceIdForSink("abc"));
    EXPECT_EQ(outputDeviceIdForSink("tl_sink_a", ""), outputDeviceIdForSink("tl_sink_a"));
}

}  // namespace
}  // namespace tunelark::test
