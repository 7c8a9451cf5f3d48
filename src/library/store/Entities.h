#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

using Bytes = std::vector<std::uint8_t>;

// Stored records: plain data. The store hands out one object per stored record (two fetches give the
// same object) and finds changes by comparing with what it last saved, so callers change fields in place.

// One audio file of the play list.
struct Mp3Entity {
    std::optional<Bytes> bookmark;
    bool canNotUseNow = false;
    std::optional<std::string> duration;
    std::optional<std::string> fileName;          // last path component, percent-decoded
    std::optional<std::string> filePath;          // file URL, percent-encoded: the entry's identity
    std::optional<std::string> mainPathFileName;  // filePath without its extension: pairs with a lyric file
    std::int16_t no = 0;                          // 1-based position in the play list

    bool operator==(const Mp3Entity&) const = default;
};

// One lyric file.
struct LrcEntity {
    std::optional<Bytes> bookmark;
    bool canNotUseNow = false;
    std::optional<std::string> charset;  // a CharsetEnum name, stored as the page sent it
    std::optional<std::string> fileName;
    std::optional<std::string> filePath;
    std::optional<std::string> mainPathFileName;

    bool operator==(const LrcEntity&) const = default;
};

// One display setting.
struct SettingsEntity {
    std::optional<std::string> key;
    std::optional<std::string> value;

    bool operator==(const SettingsEntity&) const = default;
};

}  // namespace tunelark
