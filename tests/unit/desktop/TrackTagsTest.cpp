#include "desktop/MediaPlayer2Fixture.h"
#include "desktop/TrackTagMetadata.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace tunelark::test {
namespace {

const std::string kJpeg = std::string("\xFF\xD8\xFF\xE0", 4) + "a small cover";
const std::string kPng = std::string("\x89PNG\r\n\x1A\n", 8) + "another picture";

TagPicture picture(TagPicture::Kind kind, std::string bytes, std::string mimeType = "") {
    return TagPicture{kind, std::move(mimeType), std::move(bytes)};
}

// The interface's metadata as a client reads it, and its announcements, while tags come in.
class TrackTagsTest : public MediaPlayer2Test {
protected:
    BusDict metadata() { return std::get<BusDict>(*mpris.readProperty(kMprisPlayerInterface, "Metadata")); }
    // The metadata announcements since the last call.
    std::vector<BusDict> announced() {
        queue.drain();
        std::vector<BusDict> found;
        for (const auto& change : std::exchange(bus.changes, {})) {
            if (auto it = change.values.find("Metadata"); it != change.values.end())
                found.push_back(std::get<BusDict>(it->second));
        }
        return found;
    }
    static BusScalar text(const std::string& value) { return value; }
    std::string cover(const std::string& name) const { return dir.file("cache/covers/" + name); }
};

TEST_F(TrackTagsTest, TagsArriveLaterAreAnnouncedAndTheirTextsSurviveAsUtf8) {
    ASSERT_EQ(tagReader.paths(), std::vector<std::string>{dir.file("a.mp3")}) << "read once, by local path";
    EXPECT_EQ(metadata().at("xesam:title"), text("a")) << "the file name until the tags arrive";
    EXPECT_EQ(tagReader.requests.size(), 1u) << "the same track is not read twice";
    tagReader.answer(0, TrackTags{"夜の歌 🌙", {"歌手", "Second Artist"}, "アルバム", 3,
                                  {picture(TagPicture::Kind::frontCover, kJpeg, "image/jpeg")}});
    const auto changes = announced();
    ASSERT_EQ(changes.size(), 1u);
    const BusDict& values = changes[0];
    EXPECT_EQ(values.at("xesam:title"), text("夜の歌 🌙"));
    EXPECT_EQ(values.at("xesam:artist"), BusScalar(BusStrings{"歌手", "Second Artist"}));
    EXPECT_EQ(values.at("xesam:album"), text("アルバム"));
    EXPECT_EQ(values.at("xesam:trackNumber"), BusScalar(BusInt32{3}));
    EXPECT_EQ(values.at("xesam:url"), text(url("a.mp3"))) << "the rest stays";
    const std::string* art = std::get_if<std::string>(&values.at("mpris:artUrl"));
    ASSERT_TRUE(art);
    EXPECT_THAT(*art, testing::MatchesRegex("file://.*/cache/covers/[0-9a-f]{16}\\.jpg"));
    EXPECT_EQ(readAll(pathFromFileUrl(*art)), kJpeg);
    EXPECT_EQ(metadata(), values);
    EXPECT_TRUE(sent().empty()) << "the page keeps its file names: it is told nothing";
}

TEST_F(TrackTagsTest, AResultForATrackNoLongerCurrentIsDropped) {
    engine.player().playNext();
    sent();
    metadata();
    ASSERT_EQ(tagReader.paths(), (std::vector<std::string>{dir.file("a.mp3"), dir.file("b.mp3")}));
    tagReader.answer(0, TrackTags{"Title of a", {"Artist of a"}, "Album of a", 1, {}});
    EXPECT_EQ(metadata().at("xesam:title"), text("b")) << "a's late result is not b's";
    EXPECT_FALSE(metadata().contains("xesam:artist"));
    tagReader.answer(1, TrackTags{"Title of b", {}, "", {}, {}});
    EXPECT_EQ(metadata().at("xesam:title"), text("Title of b"));
    // Back to a: its tags are read afresh.
    engine.player().playItem(url("a.mp3"));
    sent();
    metadata();
    ASSERT_EQ(tagReader.requests.size(), 3u);
    tagReader.answer(2, TrackTags{"New title of a", {}, "", {}, {}});
    EXPECT_EQ(metadata().at("xesam:title"), text("New title of a"));
}

TEST_F(TrackTagsTest, MissingOrBlankTagsFallBackToTheFileNameAndAnnounceNothing) {
    announced();
    tagReader.answer(0, TrackTags{" \t", {"", "  "}, " ", 0, {picture(TagPicture::Kind::frontCover, "not an image")}});
    EXPECT_TRUE(announced().empty()) << "nothing changed";
    const BusDict values = metadata();
    EXPECT_EQ(values.at("xesam:title"), text("a"));
    for (const char* key : {"xesam:artist", "xesam:album", "xesam:trackNumber", "mpris:artUrl"})
        EXPECT_FALSE(values.contains(key)) << key;
    EXPECT_FALSE(std::filesystem::exists(dir.file("cache/covers"))) << "no picture, no file";
}

TEST_F(TrackTagsTest, TheReaderIsNotAnsweredIntoAGoneInterface) {
    auto reader = std::make_unique<FakeTagReader>();
    auto gone = std::make_unique<MediaPlayer2>(
        MediaPlayer2::Deps{queue, engine, pageState, ops, *reader, dir.file("covers"), [](auto) {}, [] {}, [] {}});
    gone->setSignals(&bus);
    ASSERT_EQ(reader->requests.size(), 1u);
    gone.reset();
    reader->answer(0, TrackTags{"late", {}, "", {}, {}});
    EXPECT_EQ(queue.drain(), 0) << "no refresh queued for an object that is gone";
}

TEST(TagMetadataTest, TheFrontCoverIsChosenThenAnyPictureThenAPreview) {
    using K = TagPicture::Kind;
    const std::vector<TagPicture> all{picture(K::preview, kPng), picture(K::other, kPng + "x", "image/png"),
                                      picture(K::frontCover, kJpeg), picture(K::frontCover, kJpeg + "y")};
    EXPECT_EQ(coverPicture(all), &all[2]) << "the first front cover";
    const std::vector<TagPicture> noFront{picture(K::preview, kPng), picture(K::other, "?", "image/unknown"),
                                          picture(K::other, kJpeg)};
    EXPECT_EQ(coverPicture(noFront), &noFront[2]) << "the first picture of a known type";
    const std::vector<TagPicture> previewOnly{picture(K::preview, kPng)};
    EXPECT_EQ(coverPicture(previewOnly), &previewOnly[0]);
    const std::vector<TagPicture> tooLarge{picture(K::frontCover, kJpeg + std::string(kLargestCover, 'x'))};
    EXPECT_EQ(coverPicture(tooLarge), nullptr);
    EXPECT_EQ(coverPicture({}), nullptr);
}

TEST(TagMetadataTest, AnImageIsKnownByItsTypeOrItsFirstBytes) {
    using K = TagPicture::Kind;
    EXPECT_EQ(imageExtension(picture(K::other, "x", "image/webp")), "webp");
    EXPECT_EQ(imageExtension(picture(K::other, kPng, "image/jpeg")), "jpg") << "the stated type first";
    EXPECT_EQ(imageExtension(picture(K::other, kPng, "application/octet-stream")), "png");
    EXPECT_EQ(imageExtension(picture(K::other, "GIF89a...")), "gif");
    EXPECT_EQ(imageExtension(picture(K::other, std::string("RIFF\x10\0\0\0WEBPVP8 ", 16))), "webp");
    EXPECT_EQ(imageExtension(picture(K::other, kJpeg)), "jpg");
    EXPECT_EQ(imageExtension(picture(K::other, std::string("\xFF\xD8", 2))), std::nullopt);
    EXPECT_EQ(imageExtension(picture(K::other, std::string("RIFF\x10\0\0\0WAVEfmt ", 16))), std::nullopt);
}

TEST(TagMetadataTest, ACoverIsWrittenOnceAndEachPictureHasItsOwnFile) {
    TempDir dir;
    const CoverCache covers(dir.file("deep/covers"));
    const auto first = covers.store(picture(TagPicture::Kind::frontCover, kJpeg));
    ASSERT_TRUE(first);
    struct stat before {}, after {};
    ASSERT_EQ(stat(pathFromFileUrl(*first).c_str(), &before), 0);
    EXPECT_EQ(covers.store(picture(TagPicture::Kind::other, kJpeg, "image/jpeg")), first);
    ASSERT_EQ(stat(pathFromFileUrl(*first).c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino) << "not written again";
    const auto second = covers.store(picture(TagPicture::Kind::frontCover, kPng));
    ASSERT_TRUE(second);
    EXPECT_NE(second, first);
    EXPECT_EQ(readAll(pathFromFileUrl(*second)), kPng);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.file("deep/covers")), {}), 2)
        << "no part files left behind";
}

TEST(TagMetadataTest, ACoverThatCannotBeWrittenIsLeftOut) {
    TempDir dir;
    writeAll(dir.file("file"), "a file where the folder should be");
    const CoverCache covers(dir.file("file/covers"));
    EXPECT_EQ(covers.store(picture(TagPicture::Kind::frontCover, kJpeg)), std::nullopt);
    const TagMetadata metadata =
        tagMetadata(TrackTags{"t", {}, "", 4, {picture(TagPicture::Kind::frontCover, kJpeg)}}, covers);
    EXPECT_EQ(metadata.artUrl, std::nullopt);
    EXPECT_EQ(metadata.trackNumber, 4);
}

TEST(TagMetadataTest, TrackNumbersOutsideTheInterfacesRangeAreLeftOut) {
    const CoverCache covers("/nonexistent");
    for (auto [number, kept] : {std::pair<std::optional<unsigned>, std::optional<std::int32_t>>{0u, std::nullopt},
                                {1u, 1}, {2147483647u, 2147483647}, {2147483648u, std::nullopt},
                                {std::nullopt, std::nullopt}}) {
        EXPECT_EQ(tagMetadata(TrackTags{{}, {}, {}, number, {}}, covers).trackNumber, kept);
    }
    EXPECT_EQ(tagMetadata(TrackTags{"  padded title\n", {" A ", "B"}, "", {}, {}}, covers),
              (TagMetadata{"padded title", {"A", "B"}, std::nullopt, std::nullopt, std::nullopt}));
}

}  // namespace
}  // namespace tunelark::test
