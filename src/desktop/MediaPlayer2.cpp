#include "desktop/MediaPlayer2.h"

#include "desktop/MprisIntrospection.h"
#include "desktop/MprisValues.h"
#include "engine/Speeds.h"
#include "library/store/FileNames.h"

#include <algorithm>
#include <cmath>

namespace tunelark {

namespace {

constexpr const char* kInvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char* kNotSupported = "org.freedesktop.DBus.Error.NotSupported";
constexpr const char* kUnknownMethod = "org.freedesktop.DBus.Error.UnknownMethod";
constexpr const char* kReadOnly = "org.freedesktop.DBus.Error.PropertyReadOnly";

void run(const std::function<void()>& operation) {
    if (operation) operation();
}

template <typename T>
const T* argument(const std::vector<BusValue>& args, std::size_t index) {
    return index < args.size() ? std::get_if<T>(&args[index]) : nullptr;
}

std::optional<BusError> invalid(std::string message) { return BusError{kInvalidArgs, std::move(message)}; }

std::optional<BusError> notSupported(std::string message) { return BusError{kNotSupported, std::move(message)}; }

// Runs a method that always succeeds.
std::optional<BusError> done(const std::function<void()>& operation) {
    run(operation);
    return std::nullopt;
}

constexpr std::string_view kRoot = kMprisRootInterface;
constexpr std::string_view kPlayer = kMprisPlayerInterface;
constexpr int kLastSpeedIdx = static_cast<int>(kSpeeds.size()) - 1;
double rateAt(int speedIdx) { return static_cast<double>(rateForSpeedIdx(speedIdx)); }


}  // namespace

MediaPlayer2::MediaPlayer2(Deps deps)
    : deps_(std::move(deps)),
      tags_(deps_.tagReader, CoverCache(deps_.coverFolder), [this] { queueRefresh(); }),
      reader_(deps_.engine, deps_.page, tags_),
      self_(std::make_shared<MediaPlayer2*>(this)) {}

void MediaPlayer2::setSignals(BusSignals* signals) {
    signals_ = signals;
    seeked_ = false;
    if (!signals_) {
        timer_.reset();
        return;
    }
    announced_ = reader_.read();
    timer_ = deps_.queue.startRepeating(kRefreshInterval, [this] { refresh(); });
}

void MediaPlayer2::refresh() {
    refreshQueued_ = false;
    if (!signals_) return;
    PlayerState now = reader_.read();
    const BusProperties changed = now.changedSince(announced_);
    announced_ = std::move(now);
    if (!changed.empty()) signals_->propertiesChanged(kMprisPlayerInterface, changed);
    if (seeked_) {
        seeked_ = false;
        const std::int64_t position = microseconds(reader_.position().value_or(0.0)).value_or(0);
        signals_->emitSignal(kMprisPlayerInterface, "Seeked", {position});
    }
}

void MediaPlayer2::clockTicked() {
    if (!signals_) return;
    timer_.reset();
    if (++ticks_ % kTicksPerRefresh == 0) refresh();
}

void MediaPlayer2::positionSet() {
    seeked_ = true;
    queueRefresh();
}

void MediaPlayer2::transportChanged() { queueRefresh(); }

void MediaPlayer2::queueRefresh() {
    if (refreshQueued_ || !signals_) return;
    refreshQueued_ = true;
    later([](MediaPlayer2& player) { player.refresh(); });
}

void MediaPlayer2::later(std::function<void(MediaPlayer2&)> task) {
    deps_.queue.post([self = std::weak_ptr<MediaPlayer2*>(self_), task = std::move(task)] {
        if (auto alive = self.lock()) task(**alive);
    });
}

std::optional<BusError> MediaPlayer2::callMethod(const std::string& interfaceName, const std::string& method,
                                                 const Arguments& args) {
    const auto row = methods().find({interfaceName, method});
    const bool found = row != methods().end();
    if (interfaceName != kMprisPlayerInterface) {
        if (found) return row->second(*this, args);
        return BusError{kUnknownMethod, "no method " + method + " in " + interfaceName};
    }
    auto error = found ? row->second(*this, args) : BusError{kUnknownMethod, "no method " + method};
    queueRefresh();
    return error;
}

const std::map<MediaPlayer2::Member, MediaPlayer2::Method>& MediaPlayer2::methods() {
    using P = MediaPlayer2&;
    using A = const Arguments&;
    static const std::map<Member, Method> table{
        {{kRoot, "Raise"}, [](P p, A) { return done(p.deps_.raise); }},
        // After the reply: the quit decision may hold a dialog open.
        {{kRoot, "Quit"}, [](P p, A) {
             p.later([](MediaPlayer2& later) { run(later.deps_.quit); });
             return std::optional<BusError>();
         }},
        {{kPlayer, "Play"}, [](P p, A) { return done(p.deps_.operations.play); }},
        {{kPlayer, "Pause"}, [](P p, A) { return done(p.deps_.operations.pause); }},
        {{kPlayer, "Stop"}, [](P p, A) { return done(p.deps_.operations.pause); }},
        {{kPlayer, "PlayPause"}, [](P p, A) {
             const bool playing = p.reader_.read().playbackStatus == "Playing";
             return done(playing ? p.deps_.operations.pause : p.deps_.operations.play);
         }},
        {{kPlayer, "Next"}, [](P p, A) { return done(p.deps_.operations.playNext); }},
        {{kPlayer, "Previous"}, [](P p, A) { return done(p.deps_.operations.playPrev); }},
        {{kPlayer, "Seek"}, [](P p, A args) {
             const auto* offset = argument<std::int64_t>(args, 0);
             return offset ? p.seek(*offset) : invalid("Seek takes an offset in microseconds");
         }},
        {{kPlayer, "SetPosition"}, [](P p, A args) {
             const auto* trackId = argument<BusObjectPath>(args, 0);
             const auto* position = argument<std::int64_t>(args, 1);
             if (!trackId || !position) return invalid("SetPosition takes a track id and microseconds");
             return p.setPosition(trackId->path, *position);
         }},
        {{kPlayer, "OpenUri"}, [](P p, A args) {
             const auto* uri = argument<std::string>(args, 0);
             return uri ? p.openUri(*uri) : invalid("OpenUri takes a URI");
         }},
    };
    return table;
}

// Past the end acts as Next, before the start seeks to the start; nothing without a seekable track.
std::optional<BusError> MediaPlayer2::seek(std::int64_t offset) {
    const auto position = reader_.position();
    const auto duration = reader_.duration();
    if (!position || !duration) return std::nullopt;
    const double target = *position + static_cast<double>(offset) / 1e6;
    if (target >= *duration) {
        run(deps_.operations.playNext);
        return std::nullopt;
    }
    seekTo(std::max(0.0, target), *duration);
    return std::nullopt;
}

// A request for another track than the current one, or for a time outside the track, is ignored.
std::optional<BusError> MediaPlayer2::setPosition(const std::string& trackId, std::int64_t position) {
    const auto duration = reader_.duration();
    if (trackId != reader_.currentTrackId() || !duration) return std::nullopt;
    const double seconds = static_cast<double>(position) / 1e6;
    if (seconds < 0 || seconds > *duration) return std::nullopt;
    seekTo(seconds, *duration);
    return std::nullopt;
}

void MediaPlayer2::seekTo(double seconds, double duration) {
    if (deps_.operations.setCurrentPercent) deps_.operations.setCurrentPercent(seconds / duration * 10000.0);
}

std::optional<BusError> MediaPlayer2::openUri(const std::string& uri) {
    std::string path = pathFromFileUrl(uri);
    if (path.empty()) return BusError{kNotSupported, "only file: URIs of this machine can be opened"};
    if (deps_.openFiles) deps_.openFiles({std::move(path)});
    return std::nullopt;
}

std::optional<BusValue> MediaPlayer2::readProperty(const std::string& interfaceName, const std::string& name) {
    const auto row = properties().find({interfaceName, name});
    if (row != properties().end() && row->second.read) return row->second.read(*this);
    if (interfaceName != kMprisPlayerInterface) return std::nullopt;
    BusProperties state = reader_.read().properties();
    auto found = state.find(name);
    if (found == state.end()) return std::nullopt;
    return std::move(found->second);
}

std::optional<BusError> MediaPlayer2::writeProperty(const std::string& interfaceName, const std::string& name,
                                                    const BusValue& value) {
    if (interfaceName != kMprisPlayerInterface) return BusError{kReadOnly, name + " cannot be set"};
    const auto row = properties().find({interfaceName, name});
    auto error = row != properties().end() && row->second.write ? row->second.write(*this, value)
                                                                : BusError{kReadOnly, name + " cannot be set"};
    queueRefresh();
    return error;
}

const std::map<MediaPlayer2::Member, MediaPlayer2::Property>& MediaPlayer2::properties() {
    using P = MediaPlayer2&;
    using V = const BusValue&;
    const auto always = [](P) -> std::optional<BusValue> { return true; };
    static const std::map<Member, Property> table{
        {{kRoot, "CanQuit"}, {always}},
        {{kRoot, "CanRaise"}, {always}},
        {{kRoot, "HasTrackList"}, {[](P) -> std::optional<BusValue> { return false; }}},
        {{kRoot, "Identity"}, {[](P) -> std::optional<BusValue> { return std::string("Tunelark"); }}},
        {{kRoot, "DesktopEntry"},
         {[](P) -> std::optional<BusValue> { return std::string("org.tunelark.Tunelark"); }}},
        {{kRoot, "SupportedUriSchemes"}, {[](P) -> std::optional<BusValue> { return BusStrings{"file"}; }}},
        {{kRoot, "SupportedMimeTypes"}, {[](P) -> std::optional<BusValue> { return BusStrings{"audio/mpeg"}; }}},
        {{kPlayer, "Position"}, {[](P p) -> std::optional<BusValue> {
             return microseconds(p.reader_.position().value_or(0.0)).value_or(0);
         }}},
        {{kPlayer, "Volume"},
         {[](P) -> std::optional<BusValue> { return 1.0; },
          [](P, V) { return notSupported("Tunelark plays at the volume of the system"); }}},
        {{kPlayer, "MinimumRate"}, {[](P) -> std::optional<BusValue> { return rateAt(0); }}},
        {{kPlayer, "MaximumRate"}, {[](P) -> std::optional<BusValue> { return rateAt(kLastSpeedIdx); }}},
        {{kPlayer, "CanControl"}, {always}},
        // Read from the player's state; set through the page's operations.
        {{kPlayer, "Rate"}, {nullptr, [](P p, V value) {
             const auto* rate = std::get_if<double>(&value);
             return rate ? p.setRate(*rate) : invalid("Rate is a number");
         }}},
        {{kPlayer, "Shuffle"}, {nullptr, [](P p, V value) {
             const auto* shuffle = std::get_if<bool>(&value);
             if (!shuffle) return invalid("Shuffle is true or false");
             return p.setPlayMode(modeForShuffle(*shuffle, p.deps_.page.playMode));
         }}},
        {{kPlayer, "LoopStatus"}, {nullptr, [](P p, V value) {
             const auto* loop = std::get_if<std::string>(&value);
             if (loop && *loop == "Track") return notSupported("no play mode repeats one track");
             auto wanted = loop ? modeForLoopStatus(*loop, p.deps_.page.playMode) : std::nullopt;
             return wanted ? p.setPlayMode(*wanted) : invalid("LoopStatus is None, Track or Playlist");
         }}},
    };
    return table;
}

// The eight speeds are reached by the page's steps, so the page sees each speed; 0 pauses.
std::optional<BusError> MediaPlayer2::setRate(double rate) {
    if (rate == 0) {
        run(deps_.operations.pause);
        return std::nullopt;
    }
    const auto target = nearestSpeedIdx(rate);
    if (!target) return invalid("a rate is a number above 0");
    int current = deps_.engine.player().speedIdx();
    for (; current < *target; ++current) run(deps_.operations.speedUp);
    for (; current > *target; --current) run(deps_.operations.speedDown);
    return std::nullopt;
}

// Through the page's mode change, step by step, so the page shows the mode reached.
std::optional<BusError> MediaPlayer2::setPlayMode(PlayMode mode) {
    const int steps = playModeSteps(deps_.page.playMode, mode);
    for (int i = 0; i < steps; ++i) run(deps_.operations.changeMode);
    return std::nullopt;
}

}  // namespace tunelark
