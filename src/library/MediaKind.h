#pragma once
#include <string_view>

namespace tunelark {

enum class FileKind { Audio, Lyrics, Other };

// Only the last three characters of the name count, in any letter case: "notes.xmp3" is audio too.
FileKind kindOfName(std::string_view fileName);

}  // namespace tunelark
