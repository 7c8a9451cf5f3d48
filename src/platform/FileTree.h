#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace tunelark {

// One name in a folder, with the kind the folder listing reports (when it reports one).
struct TreeEntry {
    enum class Hint { File, Folder, Link, Other, Unknown };
    std::string name;
    Hint hint = Hint::Unknown;
};

// What a path names after following symbolic links; error is set when it could not be examined.
struct TreeNode {
    enum class Kind { File, Folder, Other, Failed };
    Kind kind = Kind::Failed;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool linkLoop = false;  // Failed because symbolic links lead round in a circle
    std::string error;
};

// The file system as walking a folder sees it. Every method may be called from any thread.
class FileTree {
public:
    virtual ~FileTree() = default;
    // The names in a folder without "." and ".."; false with the error's description.
    virtual bool list(const std::string& folder, std::vector<TreeEntry>& entries, std::string& error) const = 0;
    virtual TreeNode examine(const std::string& path) const = 0;
    // Whether this process may open the file for reading; false with the reason.
    virtual bool readable(const std::string& path, std::string& error) const = 0;
};

}  // namespace tunelark
