#include "desktop/PlayerState.h"

#include "desktop/MprisValues.h"
#include "engine/Speeds.h"
#include "library/store/FileNames.h"

#include <cmath>
#include <mutex>

namespace tunelark {

namespace {

struct ListPlace {
    std::size_t size = 0;
    std::optional<std::size_t> current;
    std::shared_ptr<Mp3Entity> entry;
};

ListPlace placeInList(const PageState& page) {
    ListPlace place;
    if (!page.storedMp3Entities) return place;
    const auto& list = *page.storedMp3Entities;
    place.size = list.size();
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] && list[i]->filePath == page.playingFilePath) {
            place.current = i;
            place.entry = list[i];
            break;
        }
    }
    return place;
}

// Next and previous as the transport steps by mode: "sequence" stops after the last item; the other
// modes always find an item while the list has one.
bool canGoNext(PlayMode mode, const ListPlace& place) {
    if (mode == PlayMode::sequence) return place.current && *place.current + 1 < place.size;
    return place.size > 0;
}

bool canGoPrevious(const ListPlace& place) { return place.size > 0; }

}  // namespace

BusProperties PlayerState::properties() const {
    return {
        {"PlaybackStatus", playbackStatus}, {"Rate", rate},
        {"Shuffle", shuffle},               {"LoopStatus", loopStatus},
        {"Metadata", metadata},             {"CanGoNext", canGoNext},
        {"CanGoPrevious", canGoPrevious},   {"CanPlay", canPlay},
        {"CanPause", canPause},             {"CanSeek", canSeek},
    };
}

BusProperties PlayerState::changedSince(const PlayerState& before) const {
    BusProperties now = properties();
    const BusProperties then = before.properties();
    std::erase_if(now, [&then](const auto& entry) { return then.at(entry.first) == entry.second; });
    return now;
}

PlayerState PlayerStateReader::read() {
    PlayerState state;
    PlayerUtil* engine = player();
    AudioPlayer* track = engine ? engine->mp3Player() : nullptr;
    const PlayMode mode = page_.playMode;
    const ListPlace place = placeInList(page_);

    if (track) state.playbackStatus = track->isPlaying() ? "Playing" : "Paused";
    state.rate = rateForSpeedIdx(engine ? engine->speedIdx() : kInitialSpeedIdx);
    state.shuffle = shuffleForMode(mode);
    state.loopStatus = loopStatusForMode(mode);
    state.metadata = metadata(engine, place.entry.get());
    state.canGoNext = canGoNext(mode, place);
    state.canGoPrevious = canGoPrevious(place);
    state.canPlay = place.size > 0 || track != nullptr;
    state.canPause = track != nullptr;
    state.canSeek = duration().has_value();
    return state;
}

std::optional<double> PlayerStateReader::position() const {
    PlayerUtil* engine = player();
    AudioPlayer* track = engine ? engine->mp3Player() : nullptr;
    if (!track) return std::nullopt;
    const double seconds = track->position();
    return std::isfinite(seconds) ? std::optional<double>(std::max(0.0, seconds)) : std::nullopt;
}

std::optional<double> PlayerStateReader::duration() const {
    PlayerUtil* engine = player();
    AudioPlayer* track = engine ? engine->mp3Player() : nullptr;
    if (!track) return std::nullopt;
    const double seconds = track->duration();
    return std::isfinite(seconds) && seconds > 0 ? std::optional<double>(seconds) : std::nullopt;
}

std::string PlayerStateReader::currentTrackId() const {
    return trackIdFor(page_.playingFilePath);
}

// The playing item's entry is found once per read: the list is walked five times a second.
BusDict PlayerStateReader::metadata(PlayerUtil* engine, const Mp3Entity* playing) {
    const std::string filePath = page_.playingFilePath;
    BusDict values{{"mpris:trackid", BusObjectPath{trackIdFor(filePath)}}};
    if (filePath.empty()) return values;
    const std::string fileName = playing && playing->fileName ? *playing->fileName : lastComponentDecoded(filePath);
    values["xesam:url"] = filePath;
    // Without tags, the name the page shows, without the console line that belongs to the start of the
    // track.
    addTrackMetadata(values, withoutExtension(fileName), tags_.forTrack(filePath));
    if (auto seconds = duration()) {
        if (auto length = microseconds(*seconds)) values["mpris:length"] = *length;
    }
    if (engine) {
        if (const std::string* text = lyricText(*engine)) values["xesam:asText"] = *text;
    }
    return values;
}

const std::string* PlayerStateReader::lyricText(PlayerUtil& engine) {
    LrcTimeline& timeline = engine.timeline();
    std::lock_guard lock(timeline.lock());
    if (!timeline.lrcString || timeline.lrcString->size() > kLongestLyricText) return nullptr;
    if (*timeline.lrcString != lyricText_) lyricText_ = *timeline.lrcString;
    return &lyricText_;
}

}  // namespace tunelark
