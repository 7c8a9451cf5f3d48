#pragma once
#include "library/PlayListItems.h"
#include "library/store/Store.h"
#include "platform/MainQueue.h"
#include "platform/MainWindow.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

class MainVC;

struct PlayListRecords {
    std::vector<Mp3FileItem> mp3FileItems;  // play-list order
    std::vector<LrcFileItem> lrcFileItems;  // fetch order, including entries this load deleted
};

// The play list between the store and the page: loading (renumbering and cleaning the store), the
// play-list message, and the first showing of the main window that starts the exchange. Main thread only.
class PlayList {
public:
    PlayList(Store& store, MainQueue& queue);
    PlayList(const PlayList&) = delete;
    PlayList& operator=(const PlayList&) = delete;

    // Renumbers the audio entries 1..n in play-list order (equal numbers keep their fetch order), deletes
    // lyric entries that no audio entry pairs with, saves, and hands the entries to MainVC::shared. Nothing
    // when an entry lacks a text the page needs or a fetch fails: the store is then left as it was and
    // the reason is logged.
    std::optional<PlayListRecords> loadPlayList();

    // Loads and sends the play list to the page; a failed load sends the empty list. Nothing without a
    // main view or web view.
    void sendPlayList();

    // The page is ready: the first time (the window still unsized), places the window at 1200 by 600 on
    // the main screen and shows it, sends the encoding names at once, and queues the play list and the
    // play mode. Later calls do nothing, except the first one after pageProcessEnded: that page is a
    // reloaded one and gets the native state again (the window stays as it is).
    void showWindow(MainWindow& window, const Screens& screens);

    // The page's process ended and the web view reloads the page; its next showWindow restores it.
    void pageProcessEnded(const std::string& reason);
    // Whether the lyrics window is shown, for a restored page's switch; off when not set.
    void setLyricsWindowShown(std::function<bool()> shown) { lyricsWindowShown_ = std::move(shown); }

private:
    void sendCharsetNames(MainVC& view);
    void restorePage();

    Store& store_;
    MainQueue& queue_;
    std::function<bool()> lyricsWindowShown_;
    bool pageLost_ = false;
};

}  // namespace tunelark
