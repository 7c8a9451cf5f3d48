#pragma once
#include "platform/FileTree.h"

namespace tunelark {

// The file tree through the system calls; holds no state, so threads can share it.
class PosixFileTree : public FileTree {
public:
    bool list(const std::string& folder, std::vector<TreeEntry>& entries, std::string& error) const override;
    TreeNode examine(const std::string& path) const override;
    bool readable(const std::string& path, std::string& error) const override;
};

}  // namespace tunelark
