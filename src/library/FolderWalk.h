#pragma once
#include "platform/FileTree.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

namespace tunelark {

// Shared by the walking thread and the main thread.
struct WalkControl {
    std::atomic<bool> stop{false};
    std::atomic<std::size_t> found{0};  // audio and lyric files found so far
};

struct WalkResult {
    std::vector<std::string> paths;    // the chosen order, each folder replaced by its files in URL order
    std::vector<std::string> skipped;  // one console line for each entry left out
    bool stopped = false;
};

// Expands chosen paths: a folder becomes every .mp3 and .lrc file inside it, recursively; any other path
// stays as given. A folder or file that cannot be read, and a symbolic link back to a folder that holds
// it, are left out with one line each. Stops early once control.stop is set. Runs on any thread and
// touches only its arguments.
WalkResult walkFolders(const FileTree& tree, const std::vector<std::string>& chosen, WalkControl& control);

}  // namespace tunelark
