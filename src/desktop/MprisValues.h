#pragma once
#include "page/PlayMode.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tunelark {

// How the desktop's media-player interface reads the player's state, and how its requests map onto the
// page's operations. Pure functions.

// The three play modes as the interface's loop status and shuffle flag: "cycle" loops the play list,
// "random" shuffles (endlessly, so it loops too), "sequence" stops after the last track.
std::string loopStatusForMode(PlayMode playMode);
bool shuffleForMode(PlayMode playMode);

// The play mode a loop status asks for: "None" is "sequence"; "Playlist" is "cycle", or "random" kept
// when shuffling. Nothing for "Track" (no mode repeats one track) or any other text.
std::optional<PlayMode> modeForLoopStatus(const std::string& loopStatus, PlayMode playMode);
// Shuffle on is "random"; shuffle off leaves "random" for "cycle" and keeps the other modes.
PlayMode modeForShuffle(bool shuffle, PlayMode playMode);

// The index of the playback rate nearest to rate (the lower one on a tie); nothing for a rate that is not
// finite or not above 0.
std::optional<int> nearestSpeedIdx(double rate);

// Seconds to whole microseconds, rounded; nothing for a time that is not finite or not representable.
std::optional<std::int64_t> microseconds(double seconds);

// The track id of a play-list item: an object path derived from its file path alone, so it stays the
// same while the item moves in the list and across runs. No file: the interface's "no track" path.
std::string trackIdFor(const std::string& filePath);
inline constexpr const char* kNoTrackId = "/org/mpris/MediaPlayer2/TrackList/NoTrack";

}  // namespace tunelark
