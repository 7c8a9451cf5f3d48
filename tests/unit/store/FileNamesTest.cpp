#include "library/store/FileNames.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

TEST(FileNamesTest, NamesAndUrlsOfHostileFileNames) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(getMainPathFileName("file:///Mu.sic/song"), "file:///Mu.sic") << "the last component's extension only";
    EXPECT_EQ(getMainPathFileName("file:///a/.hidden"), "file:///a/");
    EXPECT_EQ(displayName("song"), "song");
    EXPECT_EQ(displayName("a.b.mp3"), "a.b");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "getMainPathFileName:::file:///Mu.sic\ngetMainPathFileName:::file:///a/\nmainFileName:::a.b\n");
    const std::string path = "/a/100%#1?x=y&z;+,/歌 \xff\t\n.mp3";
    const std::string url = "file:///a/100%25%231%3Fx%3Dy%26z%3B%2B%2C/%E6%AD%8C%20%FF%09%0A.mp3";
    EXPECT_EQ(fileUrlFromPath(path), url);
    EXPECT_EQ(pathFromFileUrl(url), path);
    EXPECT_EQ(lastComponentDecoded(url), "歌 \xff\t\n.mp3");
    EXPECT_EQ(pathFromFileUrl("file://localhost/%e6%ad%8c%2"), "/歌%2");
    for (const char* url : {"/a/b.mp3", "http://host/a.mp3", "file:/a.mp3", "file://host/a.mp3", "file://"}) {
        EXPECT_EQ(pathFromFileUrl(url), "") << url;
    }
}

}  // namespace
}  // namespace tunelark
