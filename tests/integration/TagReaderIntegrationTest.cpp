// Tags of MP3 files made here with sox and lame (or an ID3 tag written byte by byte), read through
// GStreamer on its own thread and answered on the GLib main loop.
#include "desktop/TrackTagMetadata.h"
#include "platform/gstreamer/GstTagReader.h"
#include "TempDir.h"
#include "MainLoop.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <thread>

namespace tunelark::test {
namespace {

using namespace std::chrono_literals;

// A PNG of one colour, as an image program saves it.
std::string png(int size, guint32 rgba) {
    GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, size, size);
    gdk_pixbuf_fill(pixbuf, rgba);
    gchar* bytes = nullptr;
    gsize length = 0;
    const bool saved = gdk_pixbuf_save_to_buffer(pixbuf, &bytes, &length, "png", nullptr, nullptr);
    g_object_unref(pixbuf);
    std::string data = saved ? std::string(bytes, length) : std::string();
    g_free(bytes);
    return data;
}

class TagReaderIntegrationTest : public ::testing::Test {
protected:
    // A second of tone encoded by lame with the lame options given (tags are written as UTF-16).
    std::string song(const std::string& name, const std::string& lameOptions = "") {
        const std::string path = dir.file(name);
        EXPECT_TRUE(shell("sox -V1 -n -r 44100 -c 1 -t wav - synth 1 sine 440 | LC_ALL=C.UTF-8 lame --quiet -b 64 " +
                          lameOptions + " - '" + path + "'"))
            << "sox and lame must be installed";
        return path;
    }
    // Reads the file and waits for the answer on the main loop.
    std::optional<TrackTags> readTags(GstTagReader& reader, const std::string& path) {
        std::optional<TrackTags> answer;
        reader.read(path, [&](TrackTags tags) { answer = std::move(tags); });
        runUntil([&] { return answer.has_value(); }, 10s);
        return answer;
    }

    TempDir dir;
    GstTagReader reader;
};

TEST_F(TagReaderIntegrationTest, TheTagsOfAFileTaggedByLameArriveOnTheMainLoopWithCjkTextIntact) {
    const std::string cover = png(16, 0xCC2233FF);
    ASSERT_FALSE(cover.empty());
    writeAll(dir.file("cover.png"), cover);
    const std::string path = song("tagged song.mp3", "--id3v2-utf16 --tt '夜の歌' --ta 'アーティスト' "
                                                      "--tl 'Album ü' --tn 5 --ti '" + dir.file("cover.png") + "'");
    std::optional<TrackTags> answer;
    std::thread::id answeredOn;
    reader.read(path, [&](TrackTags tags) {
        answeredOn = std::this_thread::get_id();
        answer = std::move(tags);
    });
    EXPECT_FALSE(answer) << "never answered from inside the call";
    ASSERT_TRUE(runUntil([&] { return answer.has_value(); }, 10s));
    EXPECT_EQ(answeredOn, std::this_thread::get_id());
    // Artist, album and track number of the same kind of file: the MPRIS e2e test reads them back.
    EXPECT_EQ(answer->title, "夜の歌");
    ASSERT_EQ(answer->pictures.size(), 1u);
    EXPECT_EQ(answer->pictures[0].bytes, cover);
    EXPECT_EQ(answer->pictures[0].kind, TagPicture::Kind::other) << "lame writes its picture as \"other\"";
}

TEST_F(TagReaderIntegrationTest, PicturesKeepTheKindTheirTagGivesThemAndTheFrontCoverIsShown) {
    const std::string other = png(4, 0x00FF00FF), front = png(8, 0x0000FFFF);
    writeAll(dir.file("covers.mp3"),
             id3Tag(pictureFrame('\0', "image/png", other) + pictureFrame('\3', "image/png", front)) +
                 readAll(song("plain.mp3")));
    const auto tags = readTags(reader, dir.file("covers.mp3"));
    ASSERT_TRUE(tags);
    ASSERT_EQ(tags->pictures.size(), 2u);
    const TagPicture* shown = coverPicture(tags->pictures);
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->kind, TagPicture::Kind::frontCover);
    EXPECT_EQ(shown->bytes, front);
    EXPECT_TRUE(tags->title.empty());
}

TEST_F(TagReaderIntegrationTest, FilesWithoutTagsOrAudioAreAnsweredEmptyAndNoneStallsTheReader) {
    ASSERT_EQ(mkfifo(dir.file("pipe.mp3").c_str(), 0644), 0);
    writeAll(dir.file("noise.mp3"), std::string(64 * 1024, '\x5A'));
    song("untagged.mp3");
    for (const char* name : {"pipe.mp3", "noise.mp3", "missing.mp3", "untagged.mp3"}) {
        const auto start = std::chrono::steady_clock::now();
        const auto tags = readTags(reader, dir.file(name));
        ASSERT_TRUE(tags) << name << " was not answered";
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s) << name;
        EXPECT_TRUE(tags->title.empty() && tags->artists.empty() && tags->album.empty() && tags->pictures.empty())
            << name;
    }
    const auto tags = readTags(reader, song("after.mp3", "--tt After"));
    ASSERT_TRUE(tags);
    EXPECT_EQ(tags->title, "After");
}

TEST_F(TagReaderIntegrationTest, TheNewestRequestIsAnsweredAndAGoneReaderAnswersNothing) {
    const std::string first = song("first.mp3", "--tt First"), second = song("second.mp3", "--tt Second");
    std::vector<std::pair<std::string, std::string>> answers;  // asked for, title answered
    for (int i = 0; i < 5; ++i) {
        for (const auto& path : {first, second}) {
            reader.read(path, [&answers, path](TrackTags tags) { answers.emplace_back(path, tags.title); });
        }
    }
    ASSERT_TRUE(runUntil([&] { return !answers.empty() && answers.back().first == second; }, 10s));
    runUntil([] { return false; }, 300ms);
    EXPECT_LT(answers.size(), 10u) << "requests overtaken while waiting are dropped";
    for (const auto& [path, title] : answers) EXPECT_EQ(title, path == first ? "First" : "Second");

    int late = 0;
    {
        GstTagReader gone;
        gone.read(first, [&late](TrackTags) { ++late; });
    }
    runUntil([] { return false; }, 500ms);
    EXPECT_EQ(late, 0);
}

}  // namespace
}  // namespace tunelark::test
