#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

// One picture a file's tags hold, as found: its bytes, the MIME type it was recognised as (empty when
// unknown) and what kind of picture the tag says it is.
struct TagPicture {
    enum class Kind { frontCover, other, preview };
    Kind kind = Kind::other;
    std::string mimeType;
    std::string bytes;
};

// The tags of one audio file, all texts UTF-8; empty or absent where the file has no such tag.
struct TrackTags {
    std::string title;
    std::vector<std::string> artists;  // every artist value, in the file's order
    std::string album;
    std::optional<unsigned> trackNumber;
    std::vector<TagPicture> pictures;
};

// Reads tags of local files without keeping the main thread waiting. Main thread only.
class TagReader {
public:
    virtual ~TagReader() = default;
    // Reads the tags of the file at path (a local path, not a URL); done runs later on the main thread,
    // never from inside this call, with what was found (nothing found: empty tags). A request still
    // waiting when a later one arrives may be dropped unanswered: only the newest matters. done never runs
    // after the reader is destroyed.
    virtual void read(const std::string& path, std::function<void(TrackTags tags)> done) = 0;
};

}  // namespace tunelark
