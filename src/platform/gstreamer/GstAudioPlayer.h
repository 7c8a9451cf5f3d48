#pragma once
#include "platform/AudioPlayer.h"
#include "platform/gstreamer/GstHandles.h"
#include "platform/gstreamer/SparePipelines.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tunelark {

// One track on a playbin whose audio filter keeps the pitch when the rate changes. Main thread only;
// the bus is watched on GLib's default main context, so end of track needs a running main loop.
// Position, rate and play state changes are asked for at once and reach the pipeline together when the
// main loop has nothing more urgent: a burst of requests costs one seek and one state change, the last
// ones asked for. Until then position() answers the position asked for.
class GstAudioPlayer : public AudioPlayer {
public:
    // Opens the file and waits (at most prerollLimit) until it is ready to play; nullptr when it cannot
    // be played: missing, empty, not a media file, no audio stream, or not ready in time.
    // A pipeline settled in `spare` is used instead of a new one, and this player's is settled there when
    // it goes (unless it failed).
    static std::unique_ptr<GstAudioPlayer> open(const std::string& path, std::chrono::milliseconds prerollLimit,
                                                std::shared_ptr<SparePipelines> spare = {});

    ~GstAudioPlayer() override;
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
    GstAudioPlayer(PipelinePtr pipeline, BusPtr bus, double duration,
                   std::weak_ptr<SparePipelines> spare);
    static gboolean onBusMessage(GstBus* bus, GstMessage* message, gpointer self) noexcept;
    static gboolean onIdle(gpointer self) noexcept;
    void handleMessage(GstMessage* message);
    void seekTo(double seconds);
    void setState(GstState state);
    void applyRate(float rate);
    // Hands the waiting seek and state change to the pipeline.
    void applyPending();

    PipelinePtr pipeline_;
    BusPtr bus_;
    // The element that plays the sound, inside playbin: asked for the position directly, which spares
    // the clock's every tick a walk through three bins that find the same answer there.
    ElementPtr sink_;
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
    std::optional<double> pendingSeek_;  // seconds, at appliedRate_
    std::optional<GstState> pendingState_;
    std::weak_ptr<SparePipelines> spare_;
    IdleCall apply_;
    BusWatch watch_;  // last: removed first, so no callback reaches a half-destroyed player
};

}  // namespace tunelark
