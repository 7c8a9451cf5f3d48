#include "main_window/PageFolder.h"
#include "main_window/PageResources.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "tunelark-res-XXXXXX").string();
        path_ = fs::canonical(::mkdtemp(pattern.data()));
    }
    ~TempDir() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

void writeFile(const fs::path& path, const std::string& text = "x") {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

// <root>/bin/tunelark with the resources the test adds.
struct Layout {
    TempDir dir;
    fs::path bin = dir.path() / "bin";
    fs::path exe = bin / "tunelark";
    Layout() { writeFile(exe); }
    void addResources(const fs::path& folder, bool withPage = true) {
        writeFile(folder / "index.html");
        if (withPage) writeFile(folder / "www" / "index.html");
    }
};

TEST(PageResourcesTest, BuildTreeFolderComesFirst) {
    Layout l;
    l.addResources(l.bin / "resources");
    l.addResources(l.dir.path() / "share" / "tunelark");
    auto search = findPageResources(l.exe);
    ASSERT_TRUE(search.found);
    EXPECT_EQ(search.found->resourceFolder, l.bin / "resources");
    EXPECT_EQ(search.found->pageFolder, l.bin / "resources" / "www");
    EXPECT_EQ(search.found->page, l.bin / "resources" / "www" / "index.html");
    EXPECT_EQ(search.found->appInfo, l.bin / "resources" / "tunelark.appinfo");
}

TEST(PageResourcesTest, InstalledFolderIsUsedWhenTheBuildTreeHasNone) {
    Layout l;
    l.addResources(l.dir.path() / "share" / "tunelark");
    fs::create_directories(l.bin / "resources");  // present but without the marker
    auto search = findPageResources(l.exe);
    ASSERT_TRUE(search.found);
    EXPECT_EQ(search.found->resourceFolder, l.dir.path() / "share" / "tunelark");
}

TEST(PageResourcesTest, FoundFromTheRealPathOfALinkedExecutable) {
    Layout l;
    l.addResources(l.bin / "resources");
    TempDir elsewhere;
    fs::create_symlink(l.exe, elsewhere.path() / "tunelark");
    auto search = findPageResources(elsewhere.path() / "tunelark");
    ASSERT_TRUE(search.found);
    EXPECT_EQ(search.found->resourceFolder, l.bin / "resources");
}

TEST(PageResourcesTest, MissingPageFailsNamingTheFoldersSearched) {
    Layout l;
    auto nothing = findPageResources(l.exe);
    EXPECT_FALSE(nothing.found);
    const auto message = nothing.failureMessage();
    EXPECT_NE(message.find((l.bin / "resources").string()), std::string::npos) << message;
    EXPECT_NE(message.find((l.dir.path() / "share" / "tunelark").string()), std::string::npos) << message;

    l.addResources(l.bin / "resources", false);  // marker without the page
    l.addResources(l.dir.path() / "share" / "tunelark");
    EXPECT_FALSE(findPageResources(l.exe).found);
}

class PageFolderTest : public ::testing::Test {
protected:
    TempDir dir;
    fs::path www = dir.path() / "www";
    void SetUp() override {
        writeFile(www / "index.html", "<html>");
        writeFile(www / "js" / "main.js");
        writeFile(www / "two words.css");
        writeFile(dir.path() / "secret.txt");
        writeFile(dir.path() / "www2" / "x.js");
        fs::create_symlink(dir.path() / "secret.txt", www / "out.txt");
        fs::create_symlink(www / "js" / "main.js", www / "alias.js");
    }
};

TEST_F(PageFolderTest, ServesRegularFilesInsideOnly) {
    const PageFolder folder(www);
    EXPECT_EQ(folder.resolve("/index.html"), www / "index.html");
    EXPECT_EQ(folder.resolve("/js/main.js"), www / "js" / "main.js");
    EXPECT_EQ(folder.resolve("/two%20words.css"), www / "two words.css");
    EXPECT_EQ(folder.resolve("/alias.js"), www / "js" / "main.js");
    EXPECT_EQ(folder.resolve("/js/../index.html"), www / "index.html");

    for (const char* refused : {"/../secret.txt", "/%2e%2e/secret.txt", "/%2E%2E%2Fsecret.txt", "/js/../../secret.txt",
                                "/../www2/x.js", "/out.txt", "/js", "/", "", "/missing.html", "/index.html%00.js",
                                "/index.html%", "/index.html%4", "/%zz", "file:///etc/passwd", "/etc/passwd"}) {
        EXPECT_EQ(folder.resolve(refused), std::nullopt) << refused;
    }
}

TEST_F(PageFolderTest, MissingFolderServesNothing) {
    const PageFolder folder(dir.path() / "nowhere");
    EXPECT_EQ(folder.resolve("/index.html"), std::nullopt);
}

TEST(PercentDecodeTest, DecodesEscapesAndRefusesBrokenOnes) {
    EXPECT_EQ(PageFolder::percentDecode("a%20b%2fc%C3%A9"), "a b/c\xc3\xa9");
    EXPECT_EQ(PageFolder::percentDecode("plain"), "plain");
    EXPECT_EQ(PageFolder::percentDecode("%"), std::nullopt);
    EXPECT_EQ(PageFolder::percentDecode("%2"), std::nullopt);
    EXPECT_EQ(PageFolder::percentDecode("%g0"), std::nullopt);
    EXPECT_EQ(PageFolder::percentDecode("%00"), std::nullopt);
}

}  // namespace
}  // namespace tunelark
