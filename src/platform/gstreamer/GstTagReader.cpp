#include "platform/gstreamer/GstTagReader.h"

#include "platform/glib/GObjectHandles.h"
#include "platform/gstreamer/GstHandles.h"
#include "platform/glib/GuardedCall.h"

#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>
#include <gst/tag/tag.h>
#include <sys/stat.h>

#include <condition_variable>
#include <mutex>
#include <optional>

namespace tunelark {

struct GstTagReader::Shared {
    std::mutex mutex;
    std::condition_variable wake;
    struct Job {
        std::string path;
        std::function<void(TrackTags)> done;
    };
    std::optional<Job> pending;  // only the newest request waits
    bool stopping = false;
    bool alive = true;  // main thread only: answers are dropped once the reader is gone
};

namespace {

using Shared = GstTagReader::Shared;

constexpr std::chrono::milliseconds kSettle{150};

struct StreamListRelease {
    void operator()(GList* streams) const noexcept { gst_discoverer_stream_info_list_free(streams); }
};
using StreamListPtr = std::unique_ptr<GList, StreamListRelease>;

// A buffer's bytes, readable while this lives.
class BufferMap {
public:
    explicit BufferMap(GstBuffer* buffer)
        : buffer_(buffer), mapped_(buffer && gst_buffer_map(buffer, &map_, GST_MAP_READ)) {}
    BufferMap(const BufferMap&) = delete;
    BufferMap& operator=(const BufferMap&) = delete;
    ~BufferMap() {
        if (mapped_) gst_buffer_unmap(buffer_, &map_);
    }
    explicit operator bool() const { return mapped_; }
    std::string bytes() const { return std::string(reinterpret_cast<const char*>(map_.data), map_.size); }

private:
    GstBuffer* buffer_;
    GstMapInfo map_{};
    bool mapped_;
};

// A finished read on its way to the main context.
struct Answer {
    std::shared_ptr<Shared> shared;
    std::function<void(TrackTags)> done;
    TrackTags tags;
};

gboolean deliver(gpointer data) noexcept {
    guardedCall("tag answer", [data] {
        auto* answer = static_cast<Answer*>(data);
        if (answer->shared->alive && answer->done) answer->done(std::move(answer->tags));
    });
    return G_SOURCE_REMOVE;
}

void dropAnswer(gpointer data) noexcept { delete static_cast<Answer*>(data); }

std::string stringAt(const GstTagList* tags, const char* tag, guint index) {
    const gchar* text = nullptr;
    if (!gst_tag_list_peek_string_index(tags, tag, index, &text) || !text) return {};
    return text;
}

void addPictures(const GstTagList* tags, const char* tag, TagPicture::Kind kind, std::vector<TagPicture>& pictures) {
    for (guint i = 0, n = gst_tag_list_get_tag_size(tags, tag); i < n; ++i) {
        GstSample* raw = nullptr;
        if (!gst_tag_list_get_sample_index(tags, tag, i, &raw) || !raw) continue;
        SamplePtr sample(raw);
        const BufferMap map(gst_sample_get_buffer(sample.get()));
        if (!map) continue;
        TagPicture picture;
        picture.bytes = map.bytes();
        if (GstCaps* caps = gst_sample_get_caps(sample.get()); caps && gst_caps_get_size(caps) > 0) {
            picture.mimeType = gst_structure_get_name(gst_caps_get_structure(caps, 0));
        }
        picture.kind = kind;
        gint type = GST_TAG_IMAGE_TYPE_NONE;
        const GstStructure* info = gst_sample_get_info(sample.get());
        if (kind == TagPicture::Kind::other && info &&
            gst_structure_get_enum(info, "image-type", GST_TYPE_TAG_IMAGE_TYPE, &type) &&
            type == GST_TAG_IMAGE_TYPE_FRONT_COVER) {
            picture.kind = TagPicture::Kind::frontCover;
        }
        pictures.push_back(std::move(picture));
    }
}

TrackTags tagsOf(const GstTagList* tags) {
    TrackTags found;
    found.title = stringAt(tags, GST_TAG_TITLE, 0);
    for (guint i = 0, n = gst_tag_list_get_tag_size(tags, GST_TAG_ARTIST); i < n; ++i) {
        found.artists.push_back(stringAt(tags, GST_TAG_ARTIST, i));
    }
    found.album = stringAt(tags, GST_TAG_ALBUM, 0);
    guint number = 0;
    if (gst_tag_list_get_uint_index(tags, GST_TAG_TRACK_NUMBER, 0, &number)) found.trackNumber = number;
    addPictures(tags, GST_TAG_IMAGE, TagPicture::Kind::other, found.pictures);
    addPictures(tags, GST_TAG_PREVIEW_IMAGE, TagPicture::Kind::preview, found.pictures);
    return found;
}

// The tags of every stream of the file, each tag from the first stream that has it.
TrackTags discover(GstDiscoverer* discoverer, const std::string& path) {
    // Opening a named pipe waits for a writer, which would stall every later read.
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    GCharPtr uri(gst_filename_to_uri(path.c_str(), nullptr));
    if (!uri) return {};
    auto result = GObjectPtr<GstDiscovererInfo>::adopt(gst_discoverer_discover_uri(discoverer, uri.get(), nullptr));
    if (!result) return {};
    StreamListPtr streams(gst_discoverer_info_get_stream_list(result.get()));
    TagListPtr merged(gst_tag_list_new_empty());
    for (GList* item = streams.get(); item; item = item->next) {
        const GstTagList* tags = gst_discoverer_stream_info_get_tags(GST_DISCOVERER_STREAM_INFO(item->data));
        if (tags) merged.reset(gst_tag_list_merge(merged.get(), tags, GST_TAG_MERGE_KEEP));
    }
    return merged ? tagsOf(merged.get()) : TrackTags{};
}

void work(const std::shared_ptr<Shared>& shared, std::chrono::milliseconds limit) {
    const auto timeout = static_cast<GstClockTime>(std::chrono::nanoseconds(limit).count());
    // Made with the first request: at start-up the program has better things to do with the processor.
    GObjectPtr<GstDiscoverer> discoverer;
    for (;;) {
        Shared::Job job;
        {
            std::unique_lock lock(shared->mutex);
            shared->wake.wait(lock, [&] { return shared->stopping || shared->pending; });
            if (shared->stopping) return;
            job = std::move(*shared->pending);
            shared->pending.reset();
            // Tracks skipped past within a moment are not read: a burst of next and previous would
            // otherwise keep a pipeline of ours busy reading tracks that nobody listens to.
            if (shared->wake.wait_for(lock, kSettle, [&] { return shared->stopping || shared->pending; })) continue;
        }
        // Nothing may escape the thread: a file that cannot be read (or a picture too large to copy) is
        // answered with empty tags.
        guardedCall("tag reading", [&] {
            auto answer = std::make_unique<Answer>(Answer{shared, std::move(job.done), TrackTags{}});
            try {
                if (!discoverer) {
                    initGstreamer();
                    discoverer = GObjectPtr<GstDiscoverer>::adopt(gst_discoverer_new(timeout, nullptr));
                }
                if (discoverer) answer->tags = discover(discoverer.get(), job.path);
            } catch (const std::exception& e) {
                g_log(kLogDomain, G_LOG_LEVEL_MESSAGE, "Cannot read the tags of %s: %s", job.path.c_str(), e.what());
            }
            g_idle_add_full(G_PRIORITY_DEFAULT, deliver, answer.release(), dropAnswer);
        });
    }
}

}  // namespace

GstTagReader::GstTagReader(std::chrono::milliseconds limit) : shared_(std::make_shared<Shared>()) {
    worker_ = std::thread([shared = shared_, limit] { work(shared, limit); });
}

GstTagReader::~GstTagReader() {
    shared_->alive = false;
    {
        std::lock_guard lock(shared_->mutex);
        shared_->stopping = true;
        shared_->pending.reset();
    }
    shared_->wake.notify_all();
    worker_.join();
}

void GstTagReader::read(const std::string& path, std::function<void(TrackTags tags)> done) {
    {
        std::lock_guard lock(shared_->mutex);
        shared_->pending = Shared::Job{path, std::move(done)};
    }
    shared_->wake.notify_one();
}

}  // namespace tunelark
