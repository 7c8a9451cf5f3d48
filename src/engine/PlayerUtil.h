#pragma once
#include "engine/EngineDeps.h"
#include "engine/LyricsLoader.h"
#include "engine/lyrics/LrcTimeline.h"
#include "library/store/Entities.h"
#include "platform/AudioPlayer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tunelark {

// The transport: the loaded track, the rate and the lyrics timeline, and every operation on them —
// opening tracks from the play list, pause, stepping by play mode, seeks, speed steps and lyric jumps —
// reported to the page. Main thread only; none of the operations may run while the timeline lock is
// held (they load lyrics or walk the timeline, which takes it).
class PlayerUtil {
public:
    PlayerUtil(PlayerDeps deps, EngineSeams& seams);
    PlayerUtil(const PlayerUtil&) = delete;
    PlayerUtil& operator=(const PlayerUtil&) = delete;

    void loadLyrics();
    // Resumes the loaded track, or opens the current item's successor (or the first playable one).
    void play();
    void playItem(const std::string& filePath);
    void pause();
    // Next and previous by the page state's play mode.
    void playNext();
    void playPrevious();
    void randomPick();
    void endOfTrack();
    void changeMode();

    // Ten-thousandths of the duration; the position is clamped to the track.
    void seekPercent(double percent);
    void speedUp();
    void speedDown();
    void nextLyric();
    void previousLyric();

    // For the clock, the device watch and the desktop.
    AudioPlayer* mp3Player() const { return mp3Player_.get(); }
    LrcTimeline& timeline() { return timeline_; }
    int speedIdx() const { return speedIdx_; }
    float rate() const;
    unsigned int recordedOutputDevice() const { return recordedOutputDevice_; }
    PlayerDeps& deps() { return deps_; }
    EngineSeams& seams() { return seams_; }

private:
    enum class Step { next, previous };
    void step(Step direction);
    void recordOutputDevice();
    // Starts the loaded player; a later end of track counts again once it has started.
    bool startPlayer();
    // Opening an entry: its player replaces the loaded one when the bookmark gives access. Returns the
    // stale flag.
    bool openEntry(Mp3Entity& entry);
    std::shared_ptr<Mp3Entity> openFromPlayList(bool& stale);
    void startCandidate(const std::shared_ptr<Mp3Entity>& candidate, bool stale);
    void reportPlayFailed(const std::string& filePath);
    void reportPlayItemFailed(const Mp3Entity& entry);
    void reportStarted(const Mp3Entity& entry, bool withSlider);
    // Makes the engine the player's delegate, enables rate control and sets the rate.
    void armPlayer();
    void replacePlayer(std::unique_ptr<AudioPlayer> player);
    void onPlayerEnded(std::uint64_t generation);
    void onPlayerFailed(std::uint64_t generation, const std::string& message);
    void stepSpeed(int step);
    // Pauses, moves to the position, restores the rate and plays, reporting that it plays.
    void jumpTo(AudioPlayer& player, double position);
    void saveStore();

    PlayerDeps deps_;
    EngineSeams& seams_;
    MainVC& view_;
    PageState& page_;
    LyricsLoader lyricsLoader_;
    LrcTimeline timeline_;
    std::unique_ptr<AudioPlayer> mp3Player_;
    int speedIdx_;
    unsigned int recordedOutputDevice_ = 0;
    // Every player change makes a new generation; an end or error event of an older one is dropped.
    std::uint64_t generation_ = 0;
    // Whether the loaded player's next end of track is still to be handled (one per start).
    bool endPending_ = false;
};

// "You need to redo Add Operation for mp3:" (localised), the file name, " (", the file path, ")".
std::string staleAudioAlertText(const Mp3Entity& entry);

}  // namespace tunelark
