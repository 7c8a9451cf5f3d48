#pragma once
#include <string>
#include <vector>

namespace tunelark {

// One audio entry as the page sees it. Fields in the order of its JSON object.
struct Mp3FileItem {
    std::string fileName;
    std::string filePath;  // the file URL: the page names the item by it in later messages
    int no = 0;            // 1-based play-list position
    std::string duration;  // always empty: the page learns a length only while the track plays
    std::string mainPathFileName;
    bool operator==(const Mp3FileItem&) const = default;
};

// One lyric entry as the page sees it.
struct LrcFileItem {
    std::string fileName;
    std::string filePath;
    std::string charset;  // "utf8" when the entry has none
    std::string mainPathFileName;  // equal to its audio item's: that is how the page pairs them
    bool operator==(const LrcFileItem&) const = default;
};

// JSON arrays of the records in list order: keys in field order, no whitespace, text as UTF-8 with
// non-ASCII characters as they are; a byte that is not valid UTF-8 becomes U+FFFD. An empty list is "[]".
std::string mp3FileItemsJson(const std::vector<Mp3FileItem>& items);
std::string lrcFileItemsJson(const std::vector<LrcFileItem>& items);

}  // namespace tunelark
