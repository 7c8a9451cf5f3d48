#include "library/store/FileNames.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace tunelark {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

TEST(GetMainPathFileNameTest, CutsTheExtensionOfTheLastComponentOnly) {
    const Pairs cases = {
        {"file:///Music/a.b.mp3", "file:///Music/a.b"},
        {"song.lrc", "song"},
        {"file:///Music/song", "file:///Music"},
        {"file:///Mu.sic/song", "file:///Mu.sic"},
        {"file:///Music/My%20Song.mp3", "file:///Music/My%20Song"},
        {"file:///Music/a.LRC", "file:///Music/a"},
        {"file:///Music/.hidden", "file:///Music/"},
        {"file:///Music/song.", "file:///Music/song"},
        {"file:///Music/", "file:///Music"},
        {"song", "song"},
        {"", ""},
        {".mp3", ""},
        {"/song", ""},
        {"a/", "a"},
        {"file:///歌/歌.mp3", "file:///歌/歌"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(getMainPathFileName(text), expected) << text;
}

TEST(GetMainPathFileNameTest, WritesItsResultToTheConsole) {
    testing::internal::CaptureStdout();
    getMainPathFileName("file:///a/b.mp3");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "getMainPathFileName:::file:///a/b\n");
}

TEST(FileUrlTest, EncodesEveryByteOutsideTheUnreservedSetAndSlash) {
    const Pairs cases = {
        {"/Users/name/Music/My Song.mp3", "file:///Users/name/Music/My%20Song.mp3"},
        {"/a/100%#1?x=y&z;+,.mp3", "file:///a/100%25%231%3Fx%3Dy%26z%3B%2B%2C.mp3"},
        {"/A-Z_a.z~09/", "file:///A-Z_a.z~09/"},
        {"/歌.lrc", "file:///%E6%AD%8C.lrc"},
        {"/bad\xff\x80.mp3", "file:///bad%FF%80.mp3"},
        {"/tab\tnew\nline", "file:///tab%09new%0Aline"},
    };
    for (const auto& [path, url] : cases) {
        EXPECT_EQ(fileUrlFromPath(path), url) << path;
        EXPECT_EQ(pathFromFileUrl(url), path) << url;
    }
}

TEST(FileUrlTest, DecodingAcceptsLowerCaseHexAndLeavesBrokenEscapes) {
    EXPECT_EQ(pathFromFileUrl("file:///%e6%ad%8c"), "/歌");
    EXPECT_EQ(pathFromFileUrl("file:///a%2"), "/a%2");
    EXPECT_EQ(pathFromFileUrl("file:///a%zz%"), "/a%zz%");
    EXPECT_EQ(pathFromFileUrl("file://localhost/a%20b"), "/a b");
}

TEST(FileUrlTest, TextsThatAreNotLocalFileUrlsGiveNoPath) {
    for (const char* url : {"", "/a/b.mp3", "http://host/a.mp3", "file:/a.mp3", "file://host/a.mp3", "FILE:///a",
                            "file://"}) {
        EXPECT_EQ(pathFromFileUrl(url), "") << url;
    }
}

TEST(FileUrlTest, LastComponentIsDecoded) {
    const Pairs cases = {
        {"file:///Users/name/Music/My%20Song.mp3", "My Song.mp3"},
        {"file:///a/100%25%231%3F.lrc", "100%#1?.lrc"},
        {"file:///a/%FF.mp3", "\xff.mp3"},
        {"file:///a/", ""},
        {"plain name.mp3", "plain name.mp3"},
    };
    for (const auto& [url, name] : cases) EXPECT_EQ(lastComponentDecoded(url), name) << url;
}

TEST(DisplayNameTest, DropsTheLastDotAndWhatFollows) {
    const Pairs cases = {
        {"song.mp3", "song"}, {"a.b.mp3", "a.b"}, {".mp3", ""}, {"song", "song"}, {"", ""}, {"song.", "song"}};
    for (const auto& [name, shown] : cases) EXPECT_EQ(displayName(name), shown) << name;
}

TEST(DisplayNameTest, ConsoleLineOnlyWhenTheNameHoldsADot) {
    testing::internal::CaptureStdout();
    displayName("song");
    displayName("a.b.mp3");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "mainFileName:::a.b\n");
}

}  // namespace
}  // namespace tunelark
