#include "library/FolderWalk.h"

#include "library/MediaKind.h"
#include "library/store/FileNames.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace tunelark {

namespace {

struct FolderId {
    std::uint64_t device, inode;
    bool operator==(const FolderId&) const = default;
};

std::string joined(const std::string& folder, const std::string& name) {
    return !folder.empty() && folder.back() == '/' ? folder + name : folder + "/" + name;
}

class Walker {
public:
    Walker(const FileTree& tree, WalkControl& control, WalkResult& result)
        : tree_(tree), control_(control), result_(result) {}

    // The folder's audio and lyric files go to out in no particular order.
    void walk(const std::string& folder, FolderId id, std::vector<std::string>& out) {
        std::vector<TreeEntry> entries;
        std::string error;
        if (!tree_.list(folder, entries, error)) {
            skip("Skipped an unreadable folder: " + folder + " (" + error + ")");
            return;
        }
        // The folders being walked and those above: a link to one of them would lead round in a circle.
        ancestors_.push_back(id);
        for (const auto& entry : entries) {
            if (control_.stop.load(std::memory_order_relaxed)) {
                result_.stopped = true;
                break;
            }
            visit(joined(folder, entry.name), entry, out);
        }
        ancestors_.pop_back();
    }

    void skip(std::string line) { result_.skipped.push_back(std::move(line)); }

    // The folders that hold a chosen folder: a link up to one of them leads back into the walk too.
    void setOutsideAncestors(const std::string& chosen) {
        ancestors_.clear();
        std::filesystem::path folder = std::filesystem::path(chosen).lexically_normal();
        if (!folder.has_filename()) folder = folder.parent_path();  // "Music/" names Music
        while (folder.has_relative_path()) {
            folder = folder.parent_path();
            const TreeNode node = tree_.examine(folder.string());
            if (node.kind == TreeNode::Kind::Folder) ancestors_.push_back({node.device, node.inode});
        }
    }

private:
    void visit(const std::string& path, const TreeEntry& entry, std::vector<std::string>& out) {
        const bool wanted = kindOfName(entry.name) != FileKind::Other;
        if (entry.hint == TreeEntry::Hint::File) {
            if (wanted) take(path, out);
            return;
        }
        if (entry.hint == TreeEntry::Hint::Other && !wanted) return;
        const TreeNode node = tree_.examine(path);
        switch (node.kind) {
        case TreeNode::Kind::Failed:
            skip(node.linkLoop ? "Skipped a loop of symbolic links: " + path
                               : "Skipped an unreadable entry: " + path + " (" + node.error + ")");
            return;
        case TreeNode::Kind::Folder: {
            const FolderId id{node.device, node.inode};
            if (std::find(ancestors_.begin(), ancestors_.end(), id) != ancestors_.end()) {
                skip("Skipped a loop of symbolic links: " + path);
                return;
            }
            walk(path, id, out);
            return;
        }
        case TreeNode::Kind::File:
            if (wanted) take(path, out);
            return;
        case TreeNode::Kind::Other:
            // A pipe or a device would never end when read.
            if (wanted) skip("Skipped an entry that is not a file: " + path);
            return;
        }
    }

    void take(const std::string& path, std::vector<std::string>& out) {
        std::string error;
        if (!tree_.readable(path, error)) {
            skip("Skipped an unreadable file: " + path + " (" + error + ")");
            return;
        }
        out.push_back(path);
        control_.found.fetch_add(1, std::memory_order_relaxed);
    }

    const FileTree& tree_;
    WalkControl& control_;
    WalkResult& result_;
    std::vector<FolderId> ancestors_;
};

// The order the add operation numbers new entries in, so the first audio file here is its first.
void sortByUrl(std::vector<std::string>& paths) {
    std::vector<std::pair<std::string, std::string>> keyed;
    keyed.reserve(paths.size());
    for (auto& path : paths) keyed.emplace_back(fileUrlFromPath(path), std::move(path));
    std::sort(keyed.begin(), keyed.end());
    for (std::size_t i = 0; i < keyed.size(); ++i) paths[i] = std::move(keyed[i].second);
}

}  // namespace

WalkResult walkFolders(const FileTree& tree, const std::vector<std::string>& chosen, WalkControl& control) {
    WalkResult result;
    Walker walker(tree, control, result);
    for (const auto& path : chosen) {
        if (result.stopped) break;
        const TreeNode node = tree.examine(path);
        if (node.kind != TreeNode::Kind::Folder) {
            // Files as chosen: the add operation judges them, as it always has.
            result.paths.push_back(path);
            continue;
        }
        std::vector<std::string> files;
        walker.setOutsideAncestors(path);
        walker.walk(path, FolderId{node.device, node.inode}, files);
        sortByUrl(files);
        result.paths.insert(result.paths.end(), std::make_move_iterator(files.begin()),
                            std::make_move_iterator(files.end()));
    }
    if (control.stop.load()) result.stopped = true;
    return result;
}

}  // namespace tunelark
