#pragma once
#include "library/AddRequests.h"
#include "library/store/Store.h"
#include "platform/Dialogs.h"
#include "platform/FileTree.h"
#include "platform/MainQueue.h"
#include "platform/ProgressIndicator.h"

#include <functional>
#include <string>
#include <vector>

namespace tunelark {

// Adding audio and lyric files to the play list: each chosen file gets a stored entry with a bookmark
// (or its existing entry is refreshed), then the play list is sent to the page. A chosen folder stands for
// every audio and lyric file inside it (see AddRequests).
class AddFiles {
public:
    // The largest play-list number an audio entry can carry.
    static constexpr int kMaxNo = 32767;

    AddFiles(Store& store, Dialogs& dialogs, MainQueue& queue, std::function<void()> sendPlayList,
             const FileTree& tree, ProgressIndicator& progress, AddRequests::Launcher launcher = {});

    // The whole operation behind the page's add control: the explaining alert, the open panel (files, or
    // folders through its second action), then add with what the user chose. Nothing happens when the
    // panel is cancelled.
    void run();
    // Adds absolute paths of files and folders, after the requests before it; added gets the files
    // handed to addPaths once they are stored (never when the request is cancelled or nothing could be
    // stored).
    void add(std::vector<std::string> paths, AddRequests::Added added = {});
    // Adds absolute file paths as chosen (any order); files that are neither mp3 nor lrc are skipped.
    // Returns false when nothing could be stored because the stored entries could not be read.
    bool addPaths(const std::vector<std::string>& paths);
    bool busy() const { return requests_.busy(); }

private:
    Store& store_;
    Dialogs& dialogs_;
    MainQueue& queue_;
    std::function<void()> sendPlayList_;
    AddRequests requests_;
};

}  // namespace tunelark
