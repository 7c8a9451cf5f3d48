#include "library/store/Bookmark.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

class BookmarkTest : public ::testing::Test {
protected:
    test::TempDir dir;
    std::string song = dir.file("My Song \xff #1.mp3");
    void SetUp() override { test::writeAll(song, "audio"); }
    Bytes bookmark() {
        std::string error;
        auto made = makeBookmark(song, &error);
        EXPECT_TRUE(made.has_value()) << error;
        return made.value_or(Bytes{});
    }
};

TEST_F(BookmarkTest, ResolvesToTheSamePathWhileTheFileIsThere) {
    const Bytes made = bookmark();
    auto resolved = resolveBookmark(made);
    EXPECT_EQ(resolved.location, song);
    EXPECT_FALSE(resolved.stale);
    EXPECT_TRUE(startAccessing(*resolved.location));
    stopAccessing(*resolved.location);
}

TEST_F(BookmarkTest, FileRenamedInItsFolderIsFoundButStale) {
    const Bytes made = bookmark();
    test::writeAll(dir.file("another.mp3"), "other");
    fs::rename(song, dir.file("renamed.mp3"));
    auto resolved = resolveBookmark(made);
    EXPECT_EQ(resolved.location, dir.file("renamed.mp3"));
    EXPECT_TRUE(resolved.stale);
}

TEST_F(BookmarkTest, FileMovedAwayOrDeletedIsNotFound) {
    const Bytes made = bookmark();
    fs::create_directory(dir.file("elsewhere"));
    fs::rename(song, dir.file("elsewhere/song.mp3"));
    EXPECT_EQ(resolveBookmark(made).location, std::nullopt) << "only the bookmark's own folder is searched";
    fs::remove(dir.file("elsewhere/song.mp3"));
    auto resolved = resolveBookmark(made);
    EXPECT_EQ(resolved.location, std::nullopt);
    EXPECT_TRUE(resolved.stale);
    EXPECT_FALSE(startAccessing(song));
}

TEST_F(BookmarkTest, FolderRemovedIsNotFound) {
    const std::string folder = dir.file("gone");
    fs::create_directory(folder);
    song = folder + "/a.mp3";
    test::writeAll(song, "audio");
    const Bytes made = bookmark();
    fs::remove_all(folder);
    EXPECT_EQ(resolveBookmark(made).location, std::nullopt);
}

TEST_F(BookmarkTest, MakingFailsWithAReasonForMissingOrRelativePaths) {
    std::string error;
    EXPECT_EQ(makeBookmark(dir.file("missing.mp3"), &error), std::nullopt);
    EXPECT_NE(error.find(dir.file("missing.mp3")), std::string::npos) << error;
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
    EXPECT_EQ(makeBookmark("relative/song.mp3", &error), std::nullopt);
    EXPECT_NE(error.find("relative/song.mp3"), std::string::npos) << error;
    EXPECT_EQ(makeBookmark(""), std::nullopt) << "no error slot is fine";
}

// Every system call would stop at the NUL and reach the existing file before it: the record would name
// a file that is not the one it says.
TEST_F(BookmarkTest, APathHoldingANulByteIsRefusedBothWays) {
    std::string error;
    EXPECT_EQ(makeBookmark(song + std::string("\0other.mp3", 10), &error), std::nullopt);
    EXPECT_NE(error.find("NUL"), std::string::npos) << error;

    Bytes record = bookmark();
    const std::string withNul = song + std::string("\0x", 2);
    Bytes forged(record.begin(), record.begin() + 5);
    for (int i = 0; i < 4; ++i) forged.push_back(static_cast<std::uint8_t>(withNul.size() >> (8 * i)));
    forged.insert(forged.end(), withNul.begin(), withNul.end());
    forged.insert(forged.end(), record.end() - 16, record.end());
    auto resolved = resolveBookmark(forged);
    EXPECT_EQ(resolved.location, std::nullopt);
    EXPECT_TRUE(resolved.stale);
}

// Foreign, damaged and cut-short records are failed resolutions, never reads past the end.
TEST_F(BookmarkTest, ForeignOrDamagedRecordsResolveToNothing) {
    const Bytes made = bookmark();
    std::vector<Bytes> foreign{{}, Bytes(1, 0), Bytes(64, 0xFF), Bytes{'T', 'L', 'B', 'K'}};
    for (std::size_t size = 0; size < made.size(); ++size) foreign.emplace_back(made.begin(), made.begin() + size);
    Bytes longer = made;
    longer.push_back(0);
    foreign.push_back(longer);
    Bytes otherVersion = made;
    otherVersion[4] = 2;
    foreign.push_back(otherVersion);
    Bytes hugeLength = made;
    hugeLength[5] = hugeLength[6] = hugeLength[7] = hugeLength[8] = 0xFF;
    foreign.push_back(hugeLength);
    std::mt19937 random(7);
    for (int i = 0; i < 200; ++i) {
        Bytes noise(random() % 80);
        for (auto& byte : noise) byte = static_cast<std::uint8_t>(random());
        if (i % 2 == 0 && noise.size() >= 4) std::copy(made.begin(), made.begin() + 4, noise.begin());
        foreign.push_back(noise);
    }
    for (const auto& bytes : foreign) {
        auto resolved = resolveBookmark(bytes);
        EXPECT_EQ(resolved.location, std::nullopt) << "size " << bytes.size();
        EXPECT_TRUE(resolved.stale);
    }
}

}  // namespace
}  // namespace tunelark
