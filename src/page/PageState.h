#pragma once
#include "library/store/Store.h"
#include "page/PlayMode.h"

#include <optional>
#include <string>

namespace tunelark {

// What the main view knows of the page's world: the play list as last loaded, the current item, the
// play mode and the lyric row mode. Owned by the program and handed to the classes that read or write
// it; main thread only.
struct PageState {
    // Set by the first showWindow once the window has its real size.
    bool loaded = false;
    std::optional<Records<Mp3Entity>> storedMp3Entities;  // play-list order, from the last load
    std::optional<Records<LrcEntity>> storedLrcEntities;  // as fetched by the last load
    // True when a start succeeds, false when one fails; what the page shows is told by setIsPlaying.
    bool isPlaying = false;
    std::string playingFilePath;  // identifies the current item; "" when none
    PlayMode playMode = PlayMode::cycle;
    int displayingRowNum = 1;  // lyric rows: 1 or 2
};

}  // namespace tunelark
