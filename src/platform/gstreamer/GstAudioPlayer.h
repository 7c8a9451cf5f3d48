#pragma once
#include "platform/AudioPlayer.h"
#include "platform/gstreamer/GstHandles.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tunelark {

// One track on a playbin whose audio filter keeps the pitch when the rate changes. Main thread only;
// the bus is watched on GLib's default main context, so end of track needs a running main loop.
class GstAudioPlayer : public AudioPlayer {
public:
    // Opens the file and waits (at most prerollLimit) until it is ready to play; nullptr when it cannot
    // be played: missing, empty, not a media file, no audio stream, or not ready in time.
    static std::unique_ptr<GstAudioPlayer> open(const std::string& path, std::chrono::milliseconds prerollLimit);

    ~GstAudioPlayer() override = default;
    GstAudioPlayer(const GstAudioPlayer&) = delete;
    GstAudioPlayer& operator=(const GstAudioPlayer&) = delete;

    bool play() override;
    void pause() override;
    void stop() override;
    bool isPlaying() const override { return playing_; }
    double position() const override;
    double duration() const override;
    void setPosition(double seconds) override;
    void enableRate(bool enabled) override;
    void setRate(float rate) override;
    // The callback may destroy this player.
    void setOnEnd(std::function<void()> onEnd) override { onEnd_ = std::move(onEnd); }
    // After an error the pipeline plays no more: play() refuses.
    void setOnError(std::function<void(const std::string&)> onError) override { onError_ = std::move(onError); }

private:
    GstAudioPlayer(PipelinePtr pipeline, BusPtr bus, double duration);
    static gboolean onBusMessage(GstBus* bus, GstMessage* message, gpointer self) noexcept;
    void handleMessage(GstMessage* message);
    void seekTo(double seconds);
    void applyRate(float rate);

    PipelinePtr pipeline_;
    BusPtr bus_;
    mutable double duration_;
    mutable double lastPosition_ = 0;
    bool playing_ = false;
    bool ended_ = false;
    bool failed_ = false;
    bool rateEnabled_ = false;
    float requestedRate_ = 1.0f;
    float appliedRate_ = 1.0f;
    std::function<void()> onEnd_;
    std::function<void(const std::string&)> onError_;
    BusWatch watch_;  // last: removed first, so no callback reaches a half-destroyed player
};

}  // namespace tunelark
