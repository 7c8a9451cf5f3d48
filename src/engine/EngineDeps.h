#pragma once
#include "engine/RandomSource.h"
#include "engine/lyrics/PreferredLanguage.h"
#include "library/store/Store.h"
#include "page/MainVC.h"
#include "platform/AudioPlayer.h"
#include "platform/Dialogs.h"
#include "platform/MainQueue.h"

#include <cstdint>
#include <functional>
#include <string>

namespace tunelark {

// What the engine is given by the program (or by a test). Every reference outlives the engine.
struct PlayerDeps {
    MainQueue& queue;
    MainVC& mainVC;  // the page calls, and the page state they report
    Store& store;
    Dialogs& dialogs;  // alerts
    AudioPlayerFactory& players;
    OutputDevice& outputDevice;
    std::function<std::string()> preferredLanguage = [] { return firstPreferredLanguage(); };
    std::function<std::uint32_t()> random = makeRandomSource();
};

// What above the engine it feeds, and what rides on its clock; filled by the program once those exist.
struct EngineSeams {
    // Shows a lyric text in the lyrics window; empty while there is none. Called from main-queue tasks.
    std::function<void(const std::string&)> setLyricText;
    // Whether the main window is on screen; empty (not visible) while there is none.
    std::function<bool()> mainWindowVisible;
    // Runs after each tick of the clock, in its turn: polls that can ride on the clock need no wake-up
    // of their own.
    std::function<void()> afterTick;
    // Runs after a play start has recorded the output device, which the device watch compares with.
    std::function<void()> outputDeviceRecorded;
};

}  // namespace tunelark
