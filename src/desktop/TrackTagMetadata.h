#pragma once
#include "platform/DesktopBus.h"
#include "platform/TagReader.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tunelark {

// What the desktop's sound menu is told of a track from its tags; absent where the tags have nothing.
struct TagMetadata {
    std::optional<std::string> title;
    BusStrings artists;
    std::optional<std::string> album;
    std::optional<std::int32_t> trackNumber;
    std::optional<std::string> artUrl;
    bool operator==(const TagMetadata&) const = default;
};

// The picture shown as cover art: the front cover, else the first other picture, else a preview; nothing
// when the tags hold none of a known image type or all are larger than kLargestCover.
inline constexpr std::size_t kLargestCover = 16u << 20;
const TagPicture* coverPicture(const std::vector<TagPicture>& pictures);
// The file extension of an image by its MIME type, else by its first bytes; nothing for other data.
std::optional<std::string> imageExtension(const TagPicture& picture);

// Cover art as files in one folder, named by a digest of their bytes, so each picture is written once
// however many tracks carry it; that one write is small enough for the main thread.
class CoverCache {
public:
    explicit CoverCache(std::filesystem::path folder) : folder_(std::move(folder)) {}
    // The file URL of the picture's file, written first when missing; nothing when it cannot be written.
    std::optional<std::string> store(const TagPicture& picture) const;
    const std::filesystem::path& folder() const { return folder_; }

private:
    std::filesystem::path folder_;
};

// The tag values of a track as the desktop is told them: texts without surrounding blanks, empty ones
// left out, the cover stored in the cache.
TagMetadata tagMetadata(const TrackTags& tags, const CoverCache& covers);

// The tags of the current track, read once per track change. A result that arrives for a track that is
// no longer current is dropped. Main thread only.
class CurrentTrackTags {
public:
    // arrived runs on the main thread when the current track's tags have come in.
    CurrentTrackTags(TagReader& reader, CoverCache covers, std::function<void()> arrived);
    CurrentTrackTags(const CurrentTrackTags&) = delete;
    CurrentTrackTags& operator=(const CurrentTrackTags&) = delete;

    // The tags of the track at fileUrl; the first time that track is asked for, reading starts. Nothing
    // until they have arrived, or for a URL that is not of a local file.
    const TagMetadata* forTrack(const std::string& fileUrl);

private:
    TagReader& reader_;
    CoverCache covers_;
    std::function<void()> arrived_;
    std::string current_;
    std::uint64_t generation_ = 0;  // counts track changes; a result of an older one is stale
    std::optional<TagMetadata> tags_;
    std::shared_ptr<CurrentTrackTags*> self_;  // answers reach this object only while it lives
};

// The metadata entries of a track: its title, artists, album, track number and cover art from its tags
// (tags: nothing before they arrive), the title falling back to fallbackTitle.
void addTrackMetadata(BusDict& values, const std::string& fallbackTitle, const TagMetadata* tags);

}  // namespace tunelark
