#pragma once
#include "library/PlayListItems.h"
#include "library/store/Store.h"
#include "page/MainVC.h"
#include "platform/MainQueue.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

struct PlayListRecords {
    std::vector<Mp3FileItem> mp3FileItems;  // play-list order
    std::vector<LrcFileItem> lrcFileItems;  // fetch order, including entries this load deleted
};

// The play list between the store and the page: loading (renumbering and cleaning the store), the
// play-list message, and what a newly shown or reloaded page is sent. Main thread only.
class PlayList {
public:
    PlayList(Store& store, MainQueue& queue, MainVC& view);
    PlayList(const PlayList&) = delete;
    PlayList& operator=(const PlayList&) = delete;

    // Renumbers the audio entries 1..n in play-list order (equal numbers keep their fetch order), deletes
    // lyric entries that no audio entry pairs with, saves, and hands the entries to the page state. Nothing
    // when an entry lacks a text the page needs or a fetch fails: the store is then left as it was and
    // the reason is logged.
    std::optional<PlayListRecords> loadPlayList();

    // Loads and sends the play list to the page; a failed load sends the empty list. Nothing without a
    // web view.
    void sendPlayList();

    // The main window has just been shown for the first time: sends the encoding names at once, and
    // queues the play list and the play mode.
    void startExchange();
    // A reloaded page starts from its defaults: it gets everything the first showing sent, then what
    // playback and the lyrics window have changed since.
    void restorePage();
    // Whether the lyrics window is shown, for a restored page's switch; off when not set.
    void setLyricsWindowShown(std::function<bool()> shown) { lyricsWindowShown_ = std::move(shown); }

private:
    void sendCharsetNames();

    Store& store_;
    MainQueue& queue_;
    MainVC& view_;
    std::function<bool()> lyricsWindowShown_;
};

}  // namespace tunelark
