#include "desktop/TrackTagMetadata.h"

#include "desktop/StableDigest.h"
#include "library/store/FileNames.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <system_error>

namespace tunelark {

namespace {

std::string trimmed(const std::string& text) {
    const auto blank = [](unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    auto begin = std::find_if_not(text.begin(), text.end(), blank);
    auto end = std::find_if_not(text.rbegin(), std::make_reverse_iterator(begin), blank).base();
    return std::string(begin, end);
}

std::optional<std::string> nonEmpty(const std::string& text) {
    std::string kept = trimmed(text);
    return kept.empty() ? std::nullopt : std::optional<std::string>(std::move(kept));
}

bool startsWith(const std::string& bytes, std::string_view prefix, std::size_t at = 0) {
    return bytes.size() >= at + prefix.size() && std::string_view(bytes).substr(at, prefix.size()) == prefix;
}

}  // namespace

std::optional<std::string> imageExtension(const TagPicture& picture) {
    static const std::pair<std::string_view, std::string_view> kByType[] = {
        {"image/jpeg", "jpg"}, {"image/jpg", "jpg"}, {"image/png", "png"},
        {"image/gif", "gif"},  {"image/webp", "webp"}, {"image/bmp", "bmp"}};
    for (auto [type, extension] : kByType) {
        if (picture.mimeType == type) return std::string(extension);
    }
    // Taggers often leave the type out or get it wrong; the bytes say what the picture is.
    const std::string& bytes = picture.bytes;
    if (startsWith(bytes, "\xFF\xD8\xFF")) return "jpg";
    if (startsWith(bytes, "\x89PNG\r\n\x1A\n")) return "png";
    if (startsWith(bytes, "GIF87a") || startsWith(bytes, "GIF89a")) return "gif";
    if (startsWith(bytes, "RIFF") && startsWith(bytes, "WEBP", 8)) return "webp";
    return std::nullopt;
}

const TagPicture* coverPicture(const std::vector<TagPicture>& pictures) {
    const TagPicture* best = nullptr;
    const auto rank = [](TagPicture::Kind kind) {
        return kind == TagPicture::Kind::frontCover ? 0 : kind == TagPicture::Kind::other ? 1 : 2;
    };
    for (const TagPicture& picture : pictures) {
        if (picture.bytes.empty() || picture.bytes.size() > kLargestCover || !imageExtension(picture)) continue;
        if (!best || rank(picture.kind) < rank(best->kind)) best = &picture;
    }
    return best;
}

std::optional<std::string> CoverCache::store(const TagPicture& picture) const {
    const auto extension = imageExtension(picture);
    if (!extension) return std::nullopt;
    const std::filesystem::path file = folder_ / (stableDigest(picture.bytes) + "." + *extension);
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (!error && size == picture.bytes.size()) return fileUrlFromPath(file.string());
    std::filesystem::create_directories(folder_, error);
    // Written aside and renamed, so that a reader never sees half a picture under the final name.
    const std::filesystem::path part = file.string() + ".part";
    {
        std::ofstream out(part, std::ios::binary | std::ios::trunc);
        out.write(picture.bytes.data(), static_cast<std::streamsize>(picture.bytes.size()));
        out.close();
        if (!out) {
            std::filesystem::remove(part, error);
            return std::nullopt;
        }
    }
    std::filesystem::rename(part, file, error);
    if (error) {
        std::filesystem::remove(part, error);
        return std::nullopt;
    }
    return fileUrlFromPath(file.string());
}

TagMetadata tagMetadata(const TrackTags& tags, const CoverCache& covers) {
    TagMetadata metadata;
    metadata.title = nonEmpty(tags.title);
    for (const std::string& artist : tags.artists) {
        if (auto kept = nonEmpty(artist)) metadata.artists.push_back(std::move(*kept));
    }
    metadata.album = nonEmpty(tags.album);
    // 0 is what taggers write for "no number"; the interface's number is 32-bit.
    if (tags.trackNumber && *tags.trackNumber > 0 &&
        *tags.trackNumber <= static_cast<unsigned>(std::numeric_limits<std::int32_t>::max())) {
        metadata.trackNumber = static_cast<std::int32_t>(*tags.trackNumber);
    }
    if (const TagPicture* cover = coverPicture(tags.pictures)) metadata.artUrl = covers.store(*cover);
    return metadata;
}

CurrentTrackTags::CurrentTrackTags(TagReader& reader, CoverCache covers, std::function<void()> arrived)
    : reader_(reader),
      covers_(std::move(covers)),
      arrived_(std::move(arrived)),
      self_(std::make_shared<CurrentTrackTags*>(this)) {}

const TagMetadata* CurrentTrackTags::forTrack(const std::string& fileUrl) {
    if (fileUrl == current_) return tags_ ? &*tags_ : nullptr;
    current_ = fileUrl;
    tags_.reset();
    const std::uint64_t generation = ++generation_;
    const std::string path = pathFromFileUrl(fileUrl);
    if (path.empty()) return nullptr;
    reader_.read(path, [self = std::weak_ptr<CurrentTrackTags*>(self_), generation](TrackTags tags) {
        auto alive = self.lock();
        if (!alive) return;
        CurrentTrackTags& owner = **alive;
        if (generation != owner.generation_) return;
        owner.tags_ = tagMetadata(tags, owner.covers_);
        if (owner.arrived_) owner.arrived_();
    });
    return nullptr;
}

void addTrackMetadata(BusDict& values, const std::string& fallbackTitle, const TagMetadata* tags) {
    values["xesam:title"] = tags && tags->title ? *tags->title : fallbackTitle;
    if (!tags) return;
    if (!tags->artists.empty()) values["xesam:artist"] = tags->artists;
    if (tags->album) values["xesam:album"] = *tags->album;
    if (tags->trackNumber) values["xesam:trackNumber"] = BusInt32{*tags->trackNumber};
    if (tags->artUrl) values["mpris:artUrl"] = *tags->artUrl;
}

}  // namespace tunelark
