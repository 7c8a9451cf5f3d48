#pragma once
#include "platform/AudioPlayer.h"

#include <set>
#include <vector>

namespace tunelark::test {

// What a fake player plays; the test moves its clock, reads its calls and ends it. It outlives the player.
struct FakeTrack {
    std::string path;
    double duration = 200, position = 0;
    bool playing = false, refusePlay = false, rateEnabled = false, destroyed = false;
    float rate = 1;
    std::vector<std::string> calls;
    std::function<void()> onEnd;
    std::function<void(const std::string&)> onError;

    void advance(double seconds) { position += playing ? seconds * (rateEnabled ? rate : 1.0f) : 0; }
    // As the platform reports an end; the callback may destroy the player.
    void finish() {
        position = duration;
        playing = false;
        if (auto callback = onEnd) callback();
    }
    // As the platform reports an error mid-track (the file cut, the output gone); the callback may
    // destroy the player.
    void fail(const std::string& message) {
        playing = false;
        if (auto callback = onError) callback(message);
    }
};

class FakeAudioPlayer : public AudioPlayer {
public:
    explicit FakeAudioPlayer(std::shared_ptr<FakeTrack> track) : t_(std::move(track)) {}
    ~FakeAudioPlayer() override { t_->destroyed = true; }
    bool play() override {
        t_->calls.push_back("play");
        if (t_->refusePlay) return false;
        if (t_->position >= t_->duration) t_->position = 0;
        return t_->playing = true;
    }
    void pause() override { t_->calls.push_back("pause"); t_->playing = false; }
    void stop() override { t_->calls.push_back("stop"); t_->playing = false; t_->position = 0; }
    bool isPlaying() const override { return t_->playing; }
    double position() const override { return t_->position; }
    double duration() const override { return t_->duration; }
    void setPosition(double seconds) override { t_->calls.push_back("setPosition"); t_->position = seconds; }
    void enableRate(bool enabled) override { t_->calls.push_back("enableRate"); t_->rateEnabled = enabled; }
    void setRate(float rate) override { t_->calls.push_back("setRate"); t_->rate = rate; }
    void setOnEnd(std::function<void()> onEnd) override { t_->onEnd = std::move(onEnd); }
    void setOnError(std::function<void(const std::string&)> onError) override { t_->onError = std::move(onError); }

private:
    std::shared_ptr<FakeTrack> t_;
};

// Opens a fake track for every path but the unplayable ones; refusingPlay ones open but do not start.
struct FakeAudioPlayerFactory : AudioPlayerFactory {
    std::unique_ptr<AudioPlayer> open(const std::string& path) override {
        openedPaths.push_back(path);
        if (unplayable.count(path) != 0) return nullptr;
        tracks.push_back(std::make_shared<FakeTrack>());
        tracks.back()->path = path;
        tracks.back()->refusePlay = refusingPlay.count(path) != 0;
        return std::make_unique<FakeAudioPlayer>(tracks.back());
    }
    std::shared_ptr<FakeTrack> last() const { return tracks.empty() ? nullptr : tracks.back(); }

    std::set<std::string> unplayable, refusingPlay;
    std::vector<std::string> openedPaths;
    std::vector<std::shared_ptr<FakeTrack>> tracks;
};

struct FakeOutputDevice : OutputDevice {
    unsigned int defaultOutputDevice() const override { return id; }
    unsigned int id = 0;
};

// A device that tells of its changes, as the sound server's events let ours do.
struct FakeReportingOutputDevice : FakeOutputDevice {
    bool callOnChange(std::function<void()> callback) override {
        changed = std::move(callback);
        return true;
    }
    void change(unsigned int to) {
        id = to;
        if (changed) changed();
    }
    std::function<void()> changed;
};

}  // namespace tunelark::test
