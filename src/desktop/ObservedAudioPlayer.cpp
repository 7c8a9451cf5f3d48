#include "desktop/ObservedAudioPlayer.h"

namespace tunelark {

namespace {

using Listener = ObservedAudioPlayerFactory::Listener;

void notify(const std::function<void()>& event) {
    if (event) event();
}

class ObservedAudioPlayer : public AudioPlayer {
public:
    ObservedAudioPlayer(std::unique_ptr<AudioPlayer> inner, std::shared_ptr<Listener> listener)
        : inner_(std::move(inner)), listener_(std::move(listener)) {}

    bool play() override {
        const bool started = inner_->play();
        notify(listener_->transportChanged);
        return started;
    }
    void pause() override {
        inner_->pause();
        notify(listener_->transportChanged);
    }
    void stop() override {
        inner_->stop();
        notify(listener_->transportChanged);
    }
    bool isPlaying() const override { return inner_->isPlaying(); }
    double position() const override { return inner_->position(); }
    double duration() const override { return inner_->duration(); }
    void setPosition(double seconds) override {
        inner_->setPosition(seconds);
        notify(listener_->positionSet);
    }
    void enableRate(bool enabled) override { inner_->enableRate(enabled); }
    void setRate(float rate) override {
        inner_->setRate(rate);
        notify(listener_->transportChanged);
    }
    void setOnEnd(std::function<void()> onEnd) override {
        if (!onEnd) {
            inner_->setOnEnd(nullptr);
            return;
        }
        // The end may destroy this player and the closure with it: copy what is needed first.
        inner_->setOnEnd([listener = listener_, onEnd = std::move(onEnd)] {
            auto next = onEnd;
            auto told = listener;
            notify(told->transportChanged);
            next();
        });
    }
    void setOnError(std::function<void(const std::string&)> onError) override {
        if (!onError) {
            inner_->setOnError(nullptr);
            return;
        }
        inner_->setOnError([listener = listener_, onError = std::move(onError)](const std::string& message) {
            auto next = onError;
            auto told = listener;
            notify(told->transportChanged);
            next(message);
        });
    }

private:
    std::unique_ptr<AudioPlayer> inner_;
    std::shared_ptr<Listener> listener_;
};

}  // namespace

ObservedAudioPlayerFactory::ObservedAudioPlayerFactory(AudioPlayerFactory& inner)
    : inner_(inner), listener_(std::make_shared<Listener>()) {}

void ObservedAudioPlayerFactory::setListener(Listener listener) { *listener_ = std::move(listener); }

std::unique_ptr<AudioPlayer> ObservedAudioPlayerFactory::open(const std::string& path) {
    auto player = inner_.open(path);
    if (!player) return nullptr;
    return std::make_unique<ObservedAudioPlayer>(std::move(player), listener_);
}

}  // namespace tunelark
