#include "platform/gstreamer/GstAudioPlayer.h"

#include "platform/glib/GuardedCall.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <optional>

namespace tunelark {

namespace {

// playbin's flags: audio only (a file with pictures or video must not open a window) with software
// volume. The flag type lives inside the plugin, so the values are written here.
constexpr guint kPlayFlagAudio = 1u << 1;
constexpr guint kPlayFlagSoftVolume = 1u << 4;

// The bus whose watch is running now. A bus takes one watch at a time, and a watch removed while it runs
// is let go only after it returns: a pipeline left as spare from inside its own watch would get no watch
// for its next track.
GstBus* busInDispatch = nullptr;

std::string errorText(GstMessage* message) {
    GError* error = nullptr;
    gchar* debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    std::string text = error ? error->message : "unknown error";
    g_clear_error(&error);
    g_free(debug);
    return text;
}

void logCannotPlay(const std::string& path, const std::string& reason) {
    g_log(kLogDomain, G_LOG_LEVEL_MESSAGE, "Cannot play %s: %s", path.c_str(), reason.c_str());
}

std::optional<std::string> fileUri(const std::string& path) {
    GError* error = nullptr;
    gchar* uri = gst_filename_to_uri(path.c_str(), &error);
    if (!uri) {
        std::string reason = error ? error->message : "not a file name";
        g_clear_error(&error);
        logCannotPlay(path, reason);
        return std::nullopt;
    }
    std::string text = uri;
    g_free(uri);
    return text;
}

// The source element opens the file in the calling thread, and opening a named pipe waits for a writer:
// only a regular file may reach it.
std::optional<std::string> notARegularFile(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return std::string(std::strerror(errno));
    if (!S_ISREG(info.st_mode)) return std::string("not a regular file");
    return std::nullopt;
}

PipelinePtr makePlaybin(const std::string& uri) {
    GstElement* playbin = gst_element_factory_make("playbin", nullptr);
    if (!playbin) return nullptr;
    PipelinePtr pipeline(GST_ELEMENT(gst_object_ref_sink(playbin)));
    g_object_set(pipeline.get(), "uri", uri.c_str(), "flags", kPlayFlagAudio | kPlayFlagSoftVolume, nullptr);
    // scaletempo stretches time so that a changed rate keeps the pitch.
    if (GstElement* scaletempo = gst_element_factory_make("scaletempo", nullptr)) {
        g_object_set(pipeline.get(), "audio-filter", scaletempo, nullptr);
    } else {
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "scaletempo is missing: rate changes will change the pitch");
    }
    return pipeline;
}

// Waits until the pipeline has prerolled; the reason when it cannot, nothing when it is ready.
std::optional<std::string> preroll(GstElement* pipeline, GstBus* bus, std::chrono::milliseconds limit) {
    GstStateChangeReturn change = gst_element_set_state(pipeline, GST_STATE_PAUSED);
    if (change == GST_STATE_CHANGE_SUCCESS || change == GST_STATE_CHANGE_NO_PREROLL) return std::nullopt;
    auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return "not ready in time";
        MessagePtr message(gst_bus_timed_pop_filtered(
            bus, static_cast<GstClockTime>(left.count()),
            static_cast<GstMessageType>(GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_ERROR)));
        if (!message) return "not ready in time";
        if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) return errorText(message.get());
        if (GST_MESSAGE_SRC(message.get()) == GST_OBJECT(pipeline)) return std::nullopt;
    }
}

// The first sink inside a bin, down to one that is not a bin itself; null if there is none.
ElementPtr innermostSink(GstElement* element) {
    ElementPtr current(GST_ELEMENT(gst_object_ref(element)));
    while (GST_IS_BIN(current.get())) {
        GstIterator* sinks = gst_bin_iterate_sinks(GST_BIN(current.get()));
        GValue item = G_VALUE_INIT;
        ElementPtr next;
        if (gst_iterator_next(sinks, &item) == GST_ITERATOR_OK) next.reset(GST_ELEMENT(g_value_dup_object(&item)));
        g_value_unset(&item);
        gst_iterator_free(sinks);
        if (!next) return nullptr;
        current = std::move(next);
    }
    return current;
}

double queryDuration(GstElement* pipeline) {
    gint64 nanoseconds = 0;
    if (!gst_element_query_duration(pipeline, GST_FORMAT_TIME, &nanoseconds) || nanoseconds <= 0) return 0;
    return static_cast<double>(nanoseconds) / GST_SECOND;
}

}  // namespace

std::unique_ptr<GstAudioPlayer> GstAudioPlayer::open(const std::string& path, std::chrono::milliseconds prerollLimit,
                                                     std::shared_ptr<SparePipelines> spare) {
    if (auto reason = notARegularFile(path)) {
        logCannotPlay(path, *reason);
        return nullptr;
    }
    auto uri = fileUri(path);
    if (!uri) return nullptr;
    PipelinePtr pipeline;
    BusPtr bus;
    if (auto settled = spare ? spare->take() : std::nullopt) {
        pipeline = std::move(settled->pipeline);
        bus = std::move(settled->bus);
        g_object_set(pipeline.get(), "uri", uri->c_str(), nullptr);
    } else {
        pipeline = makePlaybin(*uri);
        if (!pipeline) {
            logCannotPlay(path, "playbin is missing");
            return nullptr;
        }
        bus.reset(gst_element_get_bus(pipeline.get()));
    }
    if (auto reason = preroll(pipeline.get(), bus.get(), prerollLimit)) {
        logCannotPlay(path, *reason);
        return nullptr;
    }
    gint audioStreams = 0;
    g_object_get(pipeline.get(), "n-audio", &audioStreams, nullptr);
    if (audioStreams <= 0) {
        logCannotPlay(path, "no audio stream");
        return nullptr;
    }
    double duration = queryDuration(pipeline.get());
    return std::unique_ptr<GstAudioPlayer>(
        new GstAudioPlayer(std::move(pipeline), std::move(bus), duration, std::move(spare)));
}

GstAudioPlayer::GstAudioPlayer(PipelinePtr pipeline, BusPtr bus, double duration,
                               std::weak_ptr<SparePipelines> spare)
    : pipeline_(std::move(pipeline)),
      bus_(std::move(bus)),
      sink_(innermostSink(pipeline_.get())),
      duration_(duration),
      spare_(std::move(spare)) {
    watch_ = BusWatch(bus_.get(), &GstAudioPlayer::onBusMessage, this);
}

GstAudioPlayer::~GstAudioPlayer() {
    watch_.reset();
    apply_.cancel();
    auto spare = spare_.lock();
    // A failed pipeline may be in any state; it goes down with its members.
    if (!spare || failed_ || bus_.get() == busInDispatch) return;
    spare->settle(SparePipeline{std::move(pipeline_), std::move(bus_)}, spare);
}

gboolean GstAudioPlayer::onIdle(gpointer self) noexcept {
    auto* player = static_cast<GstAudioPlayer*>(self);
    player->apply_.ran();
    guardedCall("audio player changes", [&] { player->applyPending(); });
    return G_SOURCE_REMOVE;
}

gboolean GstAudioPlayer::onBusMessage(GstBus* bus, GstMessage* message, gpointer self) noexcept {
    GstBus* outer = std::exchange(busInDispatch, bus);
    guardedCall("audio player bus", [&] { static_cast<GstAudioPlayer*>(self)->handleMessage(message); });
    busInDispatch = outer;
    // The watch may be gone by now (the end callback can destroy the player); GLib copes with that.
    return G_SOURCE_CONTINUE;
}

void GstAudioPlayer::handleMessage(GstMessage* message) {
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS: {
        // With a seek still to come, the end is the old segment's.
        if (ended_ || failed_ || pendingSeek_) return;
        ended_ = true;
        playing_ = false;
        // A copy: the callback may destroy this player, and with it onEnd_. Nothing of ours is touched
        // after it returns.
        auto onEnd = onEnd_;
        if (onEnd) onEnd();
        return;
    }
    case GST_MESSAGE_ERROR: {
        // A dying sink posts several errors; the first one tells.
        if (failed_) return;
        failed_ = true;
        playing_ = false;
        const std::string text = errorText(message);
        // As with the end: the callback may destroy this player.
        auto onError = onError_;
        if (onError) onError(text);
        return;
    }
    default:
        return;
    }
}

bool GstAudioPlayer::play() {
    if (failed_) return false;
    if (ended_) {
        // A finished track starts again from the beginning.
        seekTo(0);
        ended_ = false;
    }
    // A pipeline that cannot play reports it on the bus, as an error.
    setState(GST_STATE_PLAYING);
    playing_ = true;
    return true;
}

void GstAudioPlayer::pause() {
    position();  // remembered, for queries while the pipeline changes state
    setState(GST_STATE_PAUSED);
    playing_ = false;
}

void GstAudioPlayer::stop() {
    setState(GST_STATE_PAUSED);
    seekTo(0);
    playing_ = false;
    ended_ = false;
}

double GstAudioPlayer::position() const {
    if (pendingSeek_) return *pendingSeek_;
    gint64 nanoseconds = 0;
    GstElement* asked = sink_ ? sink_.get() : pipeline_.get();
    if (gst_element_query_position(asked, GST_FORMAT_TIME, &nanoseconds) && nanoseconds >= 0) {
        lastPosition_ = static_cast<double>(nanoseconds) / GST_SECOND;
    }
    return lastPosition_;
}

double GstAudioPlayer::duration() const {
    // Some streams only know their length once they play.
    if (duration_ <= 0) duration_ = queryDuration(pipeline_.get());
    return duration_;
}

void GstAudioPlayer::setPosition(double seconds) {
    if (!std::isfinite(seconds)) return;
    double length = duration();
    seconds = std::max(0.0, length > 0 ? std::min(seconds, length) : seconds);
    seekTo(seconds);
    ended_ = false;
}

void GstAudioPlayer::enableRate(bool enabled) {
    rateEnabled_ = enabled;
    applyRate(enabled ? requestedRate_ : 1.0f);
}

void GstAudioPlayer::setRate(float rate) {
    if (!std::isfinite(rate) || rate <= 0) return;
    requestedRate_ = rate;
    if (rateEnabled_) applyRate(rate);
}

void GstAudioPlayer::applyRate(float rate) {
    // The engine sets the rate at every resume; an unchanged rate must not cost a seek.
    if (rate == appliedRate_) return;
    double from = position();
    appliedRate_ = rate;
    seekTo(from);
}

void GstAudioPlayer::seekTo(double seconds) {
    // A time beyond what the clock can hold (a lyric time in a track of unknown length) seeks to the end.
    constexpr double kLatest = static_cast<double>(G_MAXINT64 / GST_SECOND);
    seconds = std::clamp(seconds, 0.0, kLatest);
    pendingSeek_ = seconds;
    lastPosition_ = seconds;
    apply_.schedule(G_PRIORITY_HIGH_IDLE, &GstAudioPlayer::onIdle, this);
}

void GstAudioPlayer::setState(GstState state) {
    pendingState_ = state;
    apply_.schedule(G_PRIORITY_HIGH_IDLE, &GstAudioPlayer::onIdle, this);
}

void GstAudioPlayer::applyPending() {
    if (auto seconds = std::exchange(pendingSeek_, std::nullopt)) {
        gst_element_seek(pipeline_.get(), appliedRate_, GST_FORMAT_TIME,
                         static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE), GST_SEEK_TYPE_SET,
                         static_cast<gint64>(*seconds * GST_SECOND), GST_SEEK_TYPE_NONE,
                         static_cast<gint64>(GST_CLOCK_TIME_NONE));
        // An end of stream still waiting on the bus belongs to the segment before the seek.
        gst_bus_set_flushing(bus_.get(), TRUE);
        gst_bus_set_flushing(bus_.get(), FALSE);
    }
    if (auto state = std::exchange(pendingState_, std::nullopt)) gst_element_set_state(pipeline_.get(), *state);
}

}  // namespace tunelark
