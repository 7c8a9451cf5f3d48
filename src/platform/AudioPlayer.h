#pragma once
#include <functional>
#include <memory>
#include <string>

namespace tunelark {

// One opened track. Main thread only. Positions and durations are seconds.
class AudioPlayer {
public:
    virtual ~AudioPlayer() = default;
    // Starts or resumes; true when playback runs afterwards. Playing a playing player is harmless.
    virtual bool play() = 0;
    virtual void pause() = 0;
    // Stops and rewinds to the start.
    virtual void stop() = 0;
    virtual bool isPlaying() const = 0;
    virtual double position() const = 0;
    virtual double duration() const = 0;
    virtual void setPosition(double seconds) = 0;
    // The rate only takes effect once rate control is enabled; pitch stays.
    virtual void enableRate(bool enabled) = 0;
    virtual void setRate(float rate) = 0;
    // Called once, later, on the main thread when the track has played to its end; never from inside a
    // method of this player, and never after the player is destroyed.
    virtual void setOnEnd(std::function<void()> onEnd) = 0;
    // Called at most once, later, on the main thread when playback stops on an error (the file cut or
    // unreadable, the output gone), with the error's text; never from inside a method of this player and
    // never after it is destroyed. The callback may destroy the player. No end of track follows it.
    virtual void setOnError(std::function<void(const std::string& message)> onError) = 0;
};

class AudioPlayerFactory {
public:
    virtual ~AudioPlayerFactory() = default;
    // Opens a file; nullptr at once (within a bounded wait) when it cannot be played.
    virtual std::unique_ptr<AudioPlayer> open(const std::string& path) = 0;
};

// The desktop's default audio output as a stable 32-bit id; 0 when unknown or when no sound server
// runs. Never blocks: it returns the last value the sound server reported.
class OutputDevice {
public:
    virtual ~OutputDevice() = default;
    virtual unsigned int defaultOutputDevice() const = 0;
    // A device that learns of its changes as they happen calls `changed` on the main thread after each
    // change of the id, and says so with true; one that cannot returns false, and must be read to be known.
    virtual bool callOnChange(std::function<void()> changed) {
        (void)changed;
        return false;
    }
};

}  // namespace tunelark
