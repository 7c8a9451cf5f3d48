#include "library/store/Bookmark.h"

#include "TempDir.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

TEST(BookmarkTest, FindsItsFileAndFollowsARenameInTheSameFolderOnly) {
    test::TempDir dir;
    const std::string song = dir.file("My Song \xff #1.mp3");
    test::writeAll(song, "audio");
    const Bytes made = makeBookmark(song).value_or(Bytes{});
    EXPECT_EQ(resolveBookmark(made).location, song);
    EXPECT_FALSE(resolveBookmark(made).stale);
    EXPECT_TRUE(startAccessing(song));
    stopAccessing(song);
    test::writeAll(dir.file("another.mp3"), "other");
    std::filesystem::rename(song, dir.file("renamed.mp3"));
    EXPECT_EQ(resolveBookmark(made).location, dir.file("renamed.mp3"));
    EXPECT_TRUE(resolveBookmark(made).stale);
    std::filesystem::create_directory(dir.file("elsewhere"));
    std::filesystem::rename(dir.file("renamed.mp3"), dir.file("elsewhere/song.mp3"));
    EXPECT_EQ(resolveBookmark(made).location, std::nullopt);
    EXPECT_TRUE(resolveBookmark(made).stale);
    EXPECT_FALSE(startAccessing(song));
    std::string error;
    EXPECT_EQ(makeBookmark(song, &error), std::nullopt);
    EXPECT_NE(error.find(song + ": No such file"), std::string::npos) << error;
    EXPECT_EQ(makeBookmark("relative/song.mp3", &error), std::nullopt);
    EXPECT_NE(error.find("relative/song.mp3"), std::string::npos) << error;
}

// System calls stop at a NUL and reach the existing file before it: the record would name another file.
TEST(BookmarkTest, APathHoldingANulByteIsRefusedBothWays) {
    test::TempDir dir;
    const std::string song = dir.file("song.mp3"), withNul = song + std::string("\0x", 2);
    test::writeAll(song, "audio");
    std::string error;
    EXPECT_EQ(makeBookmark(withNul, &error), std::nullopt);
    EXPECT_NE(error.find("NUL"), std::string::npos) << error;
    const Bytes made = makeBookmark(song).value_or(Bytes(32));
    Bytes forged(made.begin(), made.begin() + 5);  // magic and version, path length and path, device and inode
    for (int i = 0; i < 4; ++i) forged.push_back(static_cast<std::uint8_t>(withNul.size() >> (8 * i)));
    forged.insert(forged.end(), withNul.begin(), withNul.end());
    forged.insert(forged.end(), made.end() - 16, made.end());
    EXPECT_EQ(resolveBookmark(forged).location, std::nullopt);
}

}  // namespace
}  // namespace tunelark
