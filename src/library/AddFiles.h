#pragma once
#include "library/store/Store.h"
#include "platform/Dialogs.h"
#include "platform/MainQueue.h"

#include <functional>
#include <string>
#include <vector>

namespace tunelark {

// Adding audio and lyric files to the play list: each chosen file gets a stored entry with a bookmark
// (or its existing entry is refreshed), then the play list is sent to the page.
class AddFiles {
public:
    // The largest play-list number an audio entry can carry.
    static constexpr int kMaxNo = 32767;

    AddFiles(Store& store, Dialogs& dialogs, MainQueue& queue, std::function<void()> sendPlayList);

    // The whole operation behind the page's add control: the explaining alert, the open panel, then
    // addPaths with what the user chose. Nothing happens when the panel is cancelled.
    void run();
    // Adds absolute file paths as chosen (any order); files that are neither mp3 nor lrc are skipped.
    // Returns false when nothing could be stored because the stored entries could not be read.
    bool addPaths(const std::vector<std::string>& paths);

private:
    Store& store_;
    Dialogs& dialogs_;
    MainQueue& queue_;
    std::function<void()> sendPlayList_;
};

}  // namespace tunelark
