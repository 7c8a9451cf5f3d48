#include "desktop/MediaPlayer2.h"

#include "bridge/MainVC.h"
#include "desktop/MprisIntrospection.h"
#include "desktop/MprisValues.h"
#include "engine/PlaybackTexts.h"
#include "library/store/FileNames.h"

#include <algorithm>
#include <cmath>

namespace tunelark {

namespace {

constexpr const char* kFailed = "org.freedesktop.DBus.Error.Failed";
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

BusError invalid(std::string message) { return {kInvalidArgs, std::move(message)}; }

}  // namespace

MediaPlayer2::MediaPlayer2(Deps deps)
    : deps_(std::move(deps)), reader_(deps_.engine), self_(std::make_shared<MediaPlayer2*>(this)) {}

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
                                                 const std::vector<BusValue>& args) {
    if (interfaceName == kMprisRootInterface) {
        if (method == "Raise") {
            run(deps_.raise);
            return std::nullopt;
        }
        if (method == "Quit") {
            // After the reply: the quit decision may hold a dialog open.
            later([](MediaPlayer2& player) { run(player.deps_.quit); });
            return std::nullopt;
        }
    } else if (interfaceName == kMprisPlayerInterface) {
        auto error = callPlayer(method, args);
        queueRefresh();
        return error;
    }
    return BusError{kUnknownMethod, "no method " + method + " in " + interfaceName};
}

std::optional<BusError> MediaPlayer2::callPlayer(const std::string& method, const std::vector<BusValue>& args) {
    const BridgeOperations& operations = deps_.operations;
    if (method == "Play") {
        run(operations.play);
    } else if (method == "Pause" || method == "Stop") {
        run(operations.pause);
    } else if (method == "PlayPause") {
        const bool playing = reader_.read().playbackStatus == "Playing";
        run(playing ? operations.pause : operations.play);
    } else if (method == "Next") {
        run(operations.playNext);
    } else if (method == "Previous") {
        run(operations.playPrev);
    } else if (method == "Seek") {
        const auto* offset = argument<std::int64_t>(args, 0);
        return offset ? seek(*offset) : invalid("Seek takes an offset in microseconds");
    } else if (method == "SetPosition") {
        const auto* trackId = argument<BusObjectPath>(args, 0);
        const auto* position = argument<std::int64_t>(args, 1);
        if (!trackId || !position) return invalid("SetPosition takes a track id and microseconds");
        return setPosition(trackId->path, *position);
    } else if (method == "OpenUri") {
        const auto* uri = argument<std::string>(args, 0);
        return uri ? openUri(*uri) : invalid("OpenUri takes a URI");
    } else {
        return BusError{kUnknownMethod, "no method " + method};
    }
    return std::nullopt;
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
    if (interfaceName == kMprisRootInterface) return rootProperty(name);
    if (interfaceName == kMprisPlayerInterface) return playerProperty(name);
    return std::nullopt;
}

std::optional<BusValue> MediaPlayer2::rootProperty(const std::string& name) const {
    if (name == "CanQuit" || name == "CanRaise") return true;
    if (name == "HasTrackList") return false;
    if (name == "Identity") return std::string("Tunelark");
    if (name == "DesktopEntry") return std::string("org.tunelark.Tunelark");
    if (name == "SupportedUriSchemes") return BusStrings{"file"};
    if (name == "SupportedMimeTypes") return BusStrings{"audio/mpeg"};
    return std::nullopt;
}

std::optional<BusValue> MediaPlayer2::playerProperty(const std::string& name) {
    if (name == "Position") return microseconds(reader_.position().value_or(0.0)).value_or(0);
    if (name == "Volume") return 1.0;
    if (name == "MinimumRate") return static_cast<double>(rateForSpeedIdx(0));
    if (name == "MaximumRate") return static_cast<double>(rateForSpeedIdx(static_cast<int>(kSpeeds.size()) - 1));
    if (name == "CanControl") return true;
    BusProperties all = reader_.read().properties();
    auto found = all.find(name);
    if (found == all.end()) return std::nullopt;
    return std::move(found->second);
}

std::optional<BusError> MediaPlayer2::writeProperty(const std::string& interfaceName, const std::string& name,
                                                    const BusValue& value) {
    if (interfaceName != kMprisPlayerInterface) return BusError{kReadOnly, name + " cannot be set"};
    std::optional<BusError> error;
    const std::string mode = MainVC::shared ? MainVC::shared->playMode : std::string();
    if (name == "Rate") {
        const auto* rate = std::get_if<double>(&value);
        error = rate ? setRate(*rate) : invalid("Rate is a number");
    } else if (name == "Shuffle") {
        const auto* shuffle = std::get_if<bool>(&value);
        error = shuffle ? setPlayMode(modeForShuffle(*shuffle, mode)) : invalid("Shuffle is true or false");
    } else if (name == "LoopStatus") {
        const auto* loop = std::get_if<std::string>(&value);
        if (loop && *loop == "Track") {
            error = BusError{kNotSupported, "no play mode repeats one track"};
        } else {
            auto wanted = loop ? modeForLoopStatus(*loop, mode) : std::nullopt;
            error = wanted ? setPlayMode(wanted) : invalid("LoopStatus is None, Track or Playlist");
        }
    } else if (name == "Volume") {
        error = BusError{kNotSupported, "Tunelark plays at the volume of the system"};
    } else {
        error = BusError{kReadOnly, name + " cannot be set"};
    }
    queueRefresh();
    return error;
}

// The eight speeds are reached by the page's steps, so the page sees each speed; 0 pauses.
std::optional<BusError> MediaPlayer2::setRate(double rate) {
    if (rate == 0) {
        run(deps_.operations.pause);
        return std::nullopt;
    }
    const auto target = nearestSpeedIdx(rate);
    if (!target) return invalid("a rate is a number above 0");
    int current = deps_.engine.get().speedIdx();
    for (; current < *target; ++current) run(deps_.operations.speedUp);
    for (; current > *target; --current) run(deps_.operations.speedDown);
    return std::nullopt;
}

// Through the page's mode change, step by step, so the page shows the mode reached.
std::optional<BusError> MediaPlayer2::setPlayMode(const std::optional<std::string>& mode) {
    if (!MainVC::shared || !mode) return BusError{kFailed, "the main view is not ready"};
    const auto steps = modeChangeSteps(MainVC::shared->playMode, *mode);
    if (!steps) return BusError{kFailed, "unknown play mode " + MainVC::shared->playMode};
    for (int i = 0; i < *steps; ++i) run(deps_.operations.changeMode);
    return std::nullopt;
}

}  // namespace tunelark
