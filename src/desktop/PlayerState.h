#pragma once
#include "desktop/TrackTagMetadata.h"
#include "engine/PlayerHolder.h"
#include "page/PageState.h"
#include "platform/DesktopBus.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tunelark {

// The media-player interface's properties that change, at one moment.
struct PlayerState {
    std::string playbackStatus = "Stopped";
    double rate = 1.0;
    bool shuffle = false;
    std::string loopStatus = "Playlist";
    BusDict metadata;
    bool canGoNext = false;
    bool canGoPrevious = false;
    bool canPlay = false;
    bool canPause = false;
    bool canSeek = false;

    // Every property by its interface name.
    BusProperties properties() const;
    // The properties whose values differ from before.
    BusProperties changedSince(const PlayerState& before) const;
};

// Reads that state from the engine and the page state without creating the engine, and the current
// track's tags as far as they have arrived (reading them starts when a new track is first read). Lyric
// texts above kLongestLyricText are left out of the metadata. Main thread only, never while the timeline
// lock is held.
class PlayerStateReader {
public:
    static constexpr std::size_t kLongestLyricText = 1 << 20;

    PlayerStateReader(PlayerHolder& engine, const PageState& page, CurrentTrackTags& tags)
        : engine_(engine), page_(page), tags_(tags) {}

    PlayerState read();
    // The engine, or nothing before its first use.
    PlayerUtil* player() const { return engine_.created() ? &engine_.player() : nullptr; }
    // The loaded track's position and duration in seconds; nothing without a track or a usable duration.
    std::optional<double> position() const;
    std::optional<double> duration() const;
    // The track id of the current item.
    std::string currentTrackId() const;

private:
    BusDict metadata(PlayerUtil* player, const Mp3Entity* playing);
    const std::string* lyricText(PlayerUtil& player);

    PlayerHolder& engine_;
    const PageState& page_;
    CurrentTrackTags& tags_;
    std::string lyricText_;  // kept so that an unchanged text is compared, not copied
};

}  // namespace tunelark
