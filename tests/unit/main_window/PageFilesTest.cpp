#include "main_window/PageFolder.h"
#include "main_window/PageResources.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

// A page folder www/ with a page, a script below it, a secret beside it, a sibling www2/, and links.
class PageFolderTest : public ::testing::Test {
protected:
    PageFolderTest() {
        fs::create_directories(root / "www" / "js");
        fs::create_directories(root / "www2");
        for (const char* file : {"www/index.html", "www/js/main.js", "www/a b.css", "secret.txt", "www2/x.html"})
            test::writeAll((root / file).string(), file);
        fs::create_symlink(root / "secret.txt", root / "www" / "out.txt");
        fs::create_symlink(root, root / "www" / "up");
        fs::create_symlink(root / "www" / "js" / "main.js", root / "www" / "in.js");
        ::mkfifo((root / "www" / "pipe").c_str(), 0600);
    }
    std::optional<fs::path> resolve(std::string_view request) const {
        return PageFolder(root / "www").resolve(request);
    }

    test::TempDir dir;
    fs::path root = fs::canonical(dir.path);
};

TEST_F(PageFolderTest, OnlyRegularFilesWhoseRealPathIsInsideTheFolderAreServed) {
    for (auto [request, file] : {std::pair{"/index.html", "www/index.html"}, {"/js/main.js", "www/js/main.js"},
                                 {"/a%20b.css", "www/a b.css"}, {"/js/../index.html", "www/index.html"},
                                 {"/in.js", "www/js/main.js"}, {"index.html", "www/index.html"},
                                 {"/up/www/index.html", "www/index.html"}}) {
        EXPECT_EQ(resolve(request), root / file) << request;
    }
    for (const char* request : {"/../secret.txt", "/%2e%2e/secret.txt", "/%2E%2E/www2/x.html", "/..%2fsecret.txt",
                                "/js/../../secret.txt", "/out.txt", "/up/secret.txt",
                                "/../www2/x.html", "/", "", "/js", "/pipe", "/missing.html", "/%zz", "/%2",
                                "/index.html%00.png"}) {
        EXPECT_EQ(resolve(request), std::nullopt) << request;
    }
    const std::string absolute = (root / "secret.txt").string();
    EXPECT_EQ(resolve(absolute), std::nullopt) << "an absolute path names a file inside the folder";
    EXPECT_EQ(resolve("//" + absolute), std::nullopt);
    EXPECT_EQ(PageFolder(root / "nowhere").resolve("/index.html"), std::nullopt) << "no folder serves nothing";
}

// An executable in a build tree (bin/tunelark beside resources/) and one installed (prefix/bin with
// prefix/share/tunelark), each reached through a link, as a launcher's link would.
TEST(PageResourcesTest, TheFolderIsFoundBesideTheRealExecutableOrUnderShareAndAMissingPageNamesTheFolders) {
    test::TempDir dir;
    const fs::path root = fs::canonical(dir.path);
    const auto make = [&](const fs::path& resources, bool withPage) {
        fs::create_directories(resources / "www");
        test::writeAll((resources / "index.html").string(), "marker");
        if (withPage) test::writeAll((resources / "www" / "index.html").string(), "page");
    };
    fs::create_directories(root / "build");
    fs::create_directories(root / "prefix" / "bin");
    test::writeAll((root / "build" / "tunelark").string(), "");
    test::writeAll((root / "prefix" / "bin" / "tunelark").string(), "");
    make(root / "build" / "resources", true);
    make(root / "prefix" / "share" / "tunelark", true);
    make(root / "share" / "tunelark", true);  // where the build tree's installed layout would be
    fs::create_symlink(root / "build" / "tunelark", root / "built-link");
    fs::create_symlink(root / "prefix" / "bin" / "tunelark", root / "installed-link");

    for (auto [executable, folder] : {std::pair{"built-link", "build/resources"},
                                      {"installed-link", "prefix/share/tunelark"}}) {
        const ResourceSearch search = findPageResources(root / executable);
        ASSERT_TRUE(search.found) << executable;
        EXPECT_EQ(search.found->resourceFolder, root / folder);
        EXPECT_EQ(search.found->page, root / folder / "www" / "index.html");
        EXPECT_EQ(search.found->pageFolder, root / folder / "www");
    }

    fs::remove(root / "build" / "resources" / "www" / "index.html");
    const ResourceSearch missing = findPageResources(root / "built-link");
    EXPECT_FALSE(missing.found) << "the marker decides the folder; the installed page is not taken instead";
    const std::string message = missing.failureMessage();
    for (const auto& folder : {root / "build" / "resources", root / "share" / "tunelark"})
        EXPECT_NE(message.find(folder.string()), std::string::npos) << message;
    EXPECT_NE(message.find("www/index.html"), std::string::npos) << message;
}

}  // namespace
}  // namespace tunelark
