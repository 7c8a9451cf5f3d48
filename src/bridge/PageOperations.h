#pragma once
#include "bridge/BridgeOperations.h"
#include "engine/PlayerHolder.h"
#include "library/AddFiles.h"
#include "library/PlayListEditor.h"
#include "lyrics_window/LyricsWindowSwitch.h"
#include "main_window/MainWC.h"
#include "platform/Dialogs.h"

namespace tunelark {

// The parts of the program the page's operations act on; each outlives the operations.
struct OperationTargets {
    MainWC& mainWC;
    Dialogs& dialogs;
    Clipboard& clipboard;
    AddFiles& addFiles;
    PlayListEditor& editor;
    PlayerHolder& engine;
    LyricsWindowSwitch& lyricsWindow;
};

// Each page operation bound to the part that carries it out. The engine is created by the first
// transport operation that runs, not before.
BridgeOperations pageOperations(const OperationTargets& targets);

}  // namespace tunelark
