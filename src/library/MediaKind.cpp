#include "library/MediaKind.h"

#include <cctype>

namespace tunelark {

FileKind kindOfName(std::string_view fileName) {
    if (fileName.size() < 3) return FileKind::Other;
    char tail[3];
    for (std::size_t i = 0; i < 3; ++i) {
        tail[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(fileName[fileName.size() - 3 + i])));
    }
    const std::string_view lower(tail, 3);
    if (lower == "mp3") return FileKind::Audio;
    if (lower == "lrc") return FileKind::Lyrics;
    return FileKind::Other;
}

}  // namespace tunelark
