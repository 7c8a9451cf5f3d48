#pragma once
#include "platform/AudioPlayer.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tunelark::test {

// What a fake player plays; shared with the test, which moves its clock, reads its calls and makes it
// misbehave (refuse to play, end twice, report a position that went backwards). It outlives the player.
struct FakeTrack {
    std::string path;
    double duration = 200;
    double position = 0;
    bool playing = false;
    bool refusePlay = false;
    bool rateEnabled = false;
    float rate = 1;
    bool destroyed = false;
    std::vector<std::string> calls;  // "play", "pause", "stop", "setPosition", "enableRate", "setRate"
    std::function<void()> onEnd;

    // Moves the clock by wall-clock seconds while playing (at the rate, when rate control is on).
    void advance(double seconds) {
        if (playing) position += seconds * (rateEnabled ? rate : 1.0f);
    }
    // Plays to the end and reports it, as the platform does (the callback may destroy the player).
    void finish() {
        position = duration;
        playing = false;
        auto callback = onEnd;
        if (callback) callback();
    }
};

class FakeAudioPlayer : public AudioPlayer {
public:
    explicit FakeAudioPlayer(std::shared_ptr<FakeTrack> track) : track_(std::move(track)) {}
    ~FakeAudioPlayer() override { track_->destroyed = true; }

    bool play() override {
        track_->calls.push_back("play");
        if (track_->refusePlay) return false;
        if (track_->position >= track_->duration) track_->position = 0;  // a finished track starts over
        track_->playing = true;
        return true;
    }
    void pause() override {
        track_->calls.push_back("pause");
        track_->playing = false;
    }
    void stop() override {
        track_->calls.push_back("stop");
        track_->playing = false;
        track_->position = 0;
    }
    bool isPlaying() const override { return track_->playing; }
    double position() const override { return track_->position; }
    double duration() const override { return track_->duration; }
    void setPosition(double seconds) override {
        track_->calls.push_back("setPosition");
        track_->position = seconds;
    }
    void enableRate(bool enabled) override {
        track_->calls.push_back("enableRate");
        track_->rateEnabled = enabled;
    }
    void setRate(float rate) override {
        track_->calls.push_back("setRate");
        track_->rate = rate;
    }
    void setOnEnd(std::function<void()> onEnd) override { track_->onEnd = std::move(onEnd); }

private:
    std::shared_ptr<FakeTrack> track_;
};

// Opens a fake track for every path except the ones the test marks unplayable.
class FakeAudioPlayerFactory : public AudioPlayerFactory {
public:
    std::unique_ptr<AudioPlayer> open(const std::string& path) override {
        openedPaths.push_back(path);
        if (unplayable.count(path) != 0) return nullptr;
        auto track = std::make_shared<FakeTrack>();
        track->path = path;
        track->duration = duration;
        track->refusePlay = refusingPlay.count(path) != 0;
        tracks.push_back(track);
        return std::make_unique<FakeAudioPlayer>(track);
    }

    std::shared_ptr<FakeTrack> last() const { return tracks.empty() ? nullptr : tracks.back(); }

    double duration = 200;             // of every track opened from now on
    std::set<std::string> unplayable;    // paths whose open fails
    std::set<std::string> refusingPlay;  // paths that open but whose play does not start
    std::vector<std::string> openedPaths;
    std::vector<std::shared_ptr<FakeTrack>> tracks;  // every track opened, in order
};

// The default output device as the test sets it.
class FakeOutputDevice : public OutputDevice {
public:
    unsigned int defaultOutputDevice() const override { return id; }
    unsigned int id = 0;
};

}  // namespace tunelark::test
