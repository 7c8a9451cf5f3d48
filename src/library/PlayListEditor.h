#pragma once
#include "engine/PlayerHolder.h"
#include "library/PlayList.h"
#include "library/store/Store.h"
#include "page/MainVC.h"
#include "platform/MainQueue.h"

#include <string>

namespace tunelark {

// What the page's editing of the play list does to the store, to playback and to the page: remove,
// move, clear, and the choice of a lyric file's encoding. Main thread only.
class PlayListEditor {
public:
    PlayListEditor(Store& store, MainQueue& queue, MainVC& view, PlayList& playList, PlayerHolder& engine);

    // Removes the audio entry and the lyric entry named by the file path's main path; the current track
    // hands over to the next one by play mode (left paused when it was not playing).
    void remove(const std::string& filePath);
    // Positions are 1-based; the page has already moved the item on its side.
    void moveItem(int fromNo, int toNo);
    // Deletes every audio and lyric entry (settings stay), stops the player and resets the page.
    void clear();
    // Stores the name as given and reloads the lyrics of the playing track.
    void setCharset(const std::string& mainPathFileName, const std::string& charset);

private:
    bool playerIsPlaying();

    Store& store_;
    MainQueue& queue_;
    MainVC& view_;
    PageState& page_;
    PlayList& playList_;
    PlayerHolder& engine_;
};

}  // namespace tunelark
