#include "platform/PosixFileTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace tunelark {

namespace {

struct DirCloser {
    void operator()(DIR* dir) const noexcept { closedir(dir); }
};

TreeEntry::Hint hintOf(unsigned char type) {
    switch (type) {
    case DT_REG: return TreeEntry::Hint::File;
    case DT_DIR: return TreeEntry::Hint::Folder;
    case DT_LNK: return TreeEntry::Hint::Link;
    case DT_UNKNOWN: return TreeEntry::Hint::Unknown;
    default: return TreeEntry::Hint::Other;
    }
}

}  // namespace

bool PosixFileTree::list(const std::string& folder, std::vector<TreeEntry>& entries, std::string& error) const {
    std::unique_ptr<DIR, DirCloser> dir(opendir(folder.c_str()));
    if (!dir) {
        error = std::strerror(errno);
        return false;
    }
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(dir.get());
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        entries.push_back({std::string(name), hintOf(entry->d_type)});
    }
    if (errno != 0) {
        error = std::strerror(errno);
        return false;
    }
    return true;
}

TreeNode PosixFileTree::examine(const std::string& path) const {
    TreeNode node;
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        node.linkLoop = errno == ELOOP;
        node.error = std::strerror(errno);
        return node;
    }
    node.kind = S_ISDIR(info.st_mode) ? TreeNode::Kind::Folder
                : S_ISREG(info.st_mode) ? TreeNode::Kind::File
                                        : TreeNode::Kind::Other;
    node.device = static_cast<std::uint64_t>(info.st_dev);
    node.inode = static_cast<std::uint64_t>(info.st_ino);
    return node;
}

bool PosixFileTree::readable(const std::string& path, std::string& error) const {
    // The effective identity decides, as it does when the player opens the file.
    if (faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0) return true;
    error = std::strerror(errno);
    return false;
}

}  // namespace tunelark
