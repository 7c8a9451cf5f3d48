#include "library/FolderWalk.h"

#include "platform/PosixFileTree.h"
#include "TempDir.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <set>

namespace tunelark {
namespace {

using namespace ::testing;
namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

class FolderWalkTest : public ::testing::Test {
protected:
    std::string make(const std::string& relative) {
        const std::string path = dir.file(relative);
        fs::create_directories(fs::path(path).parent_path());
        test::writeAll(path, "");
        return path;
    }
    std::string folder(const std::string& relative) {
        fs::create_directories(dir.file(relative));
        return dir.file(relative);
    }
    WalkResult walk(const Texts& chosen, const FileTree& tree) { return walkFolders(tree, chosen, control); }
    WalkResult walk(const Texts& chosen) { return walk(chosen, posix); }

    test::TempDir dir;
    PosixFileTree posix;
    WalkControl control;
};

// Fails the folders and files it is told to, as a file system does that refuses to read them.
class RefusingTree : public FileTree {
public:
    explicit RefusingTree(const FileTree& real) : real_(real) {}
    bool list(const std::string& folder, std::vector<TreeEntry>& entries, std::string& error) const override {
        if (refused.count(folder)) {
            error = "Permission denied";
            return false;
        }
        return real_.list(folder, entries, error);
    }
    TreeNode examine(const std::string& path) const override { return real_.examine(path); }
    bool readable(const std::string& path, std::string& error) const override {
        if (refused.count(path)) {
            error = "Permission denied";
            return false;
        }
        return real_.readable(path, error);
    }
    std::set<std::string> refused;

private:
    const FileTree& real_;
};

TEST_F(FolderWalkTest, AFolderBecomesEveryAudioAndLyricFileInsideItInUrlOrderAndFilesStayAsGiven) {
    const auto music = folder("Music");
    const Texts expected{make("Music/é.lrc"), make("Music/A Band/01 intro.MP3"), make("Music/A Band/01 intro.lrc"),
                         make("Music/Zed.mp3"), make("Music/a/b/c/deep.mp3")};
    make("Music/cover.jpg");
    make("Music/A Band/notes.txt");
    folder("Music/empty");
    const auto loose = make("elsewhere/x.txt");
    const auto result = walk({loose, music, dir.file("missing.mp3")});
    EXPECT_EQ(result.paths, (Texts{loose, expected[0], expected[1], expected[2], expected[3], expected[4],
                                   dir.file("missing.mp3")}))
        << "the add operation judges chosen files itself; in a URL, é is %C3%A9 and comes before letters";
    EXPECT_THAT(result.skipped, IsEmpty());
    EXPECT_FALSE(result.stopped);
    EXPECT_EQ(control.found.load(), 5u);
}

TEST_F(FolderWalkTest, LoopsOfSymbolicLinksAreSkippedWithOneLineEachAndOtherLinksAreFollowed) {
    const auto music = folder("Music");
    const auto song = make("Music/inner/song.mp3");
    const auto shared = make("shared/other.lrc");
    fs::create_directory_symlink("..", dir.file("Music/inner/up"));             // back to Music
    fs::create_directory_symlink(music + "/inner", dir.file("Music/inner/self"));  // to the folder it is in
    fs::create_directory_symlink(dir.path, dir.file("Music/inner/top"));           // above the chosen folder
    fs::create_symlink(dir.file("Music/ping.mp3"), dir.file("Music/pong.mp3"));   // links to each other
    fs::create_symlink(dir.file("Music/pong.mp3"), dir.file("Music/ping.mp3"));
    fs::create_directory_symlink(dir.file("shared"), dir.file("Music/linked"));   // no loop: followed
    fs::create_symlink(dir.file("gone.mp3"), dir.file("Music/dangling.mp3"));
    const auto result = walk({music});
    EXPECT_EQ(result.paths, (Texts{music + "/inner/song.mp3", music + "/linked/other.lrc"})) << song << shared;
    EXPECT_THAT(result.skipped, UnorderedElementsAre(
                                    "Skipped a loop of symbolic links: " + music + "/inner/up",
                                    "Skipped a loop of symbolic links: " + music + "/inner/self",
                                    "Skipped a loop of symbolic links: " + music + "/inner/top",
                                    "Skipped a loop of symbolic links: " + music + "/ping.mp3",
                                    "Skipped a loop of symbolic links: " + music + "/pong.mp3",
                                    "Skipped an unreadable entry: " + music + "/dangling.mp3 (No such file or directory)"));
}

TEST_F(FolderWalkTest, UnreadableFoldersAndFilesAreSkippedWithOneLineEachAndTheRestIsKept) {
    const auto music = folder("Music");
    const Texts kept{make("Music/a.mp3"), make("Music/open/b.mp3")};
    make("Music/locked/c.mp3");
    const auto secret = make("Music/secret.lrc");
    RefusingTree tree(posix);
    tree.refused = {music + "/locked", secret};
    const auto result = walk({music}, tree);
    EXPECT_EQ(result.paths, kept);
    EXPECT_THAT(result.skipped,
                UnorderedElementsAre("Skipped an unreadable folder: " + music + "/locked (Permission denied)",
                                     "Skipped an unreadable file: " + secret + " (Permission denied)"));
    tree.refused = {music};
    EXPECT_THAT(walk({music}, tree).skipped,
                ElementsAre("Skipped an unreadable folder: " + music + " (Permission denied)"));
}

TEST_F(FolderWalkTest, AStopEndsTheWalkEarly) {
    const auto music = folder("Music");
    for (int i = 0; i < 10; ++i) make("Music/" + std::to_string(i) + ".mp3");
    control.stop = true;
    const auto result = walk({music, make("later.mp3")});
    EXPECT_TRUE(result.stopped);
    EXPECT_THAT(result.paths, IsEmpty()) << "a stopped walk hands over nothing that comes after the stop";
}

}  // namespace
}  // namespace tunelark
