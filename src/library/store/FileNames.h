#pragma once
#include <string>
#include <string_view>

namespace tunelark {

// A path or URL text without the extension of its last component; writes
// "getMainPathFileName:::<result>" to the console.
std::string getMainPathFileName(std::string_view text);

// "file://" and the absolute path, percent-encoded (bytes outside the unreserved set and "/").
std::string fileUrlFromPath(std::string_view absolutePath);
// The path of a file URL, percent-decoded; empty when the text is not a file URL.
std::string pathFromFileUrl(std::string_view url);
// The last path component of a URL or path, percent-decoded.
std::string lastComponentDecoded(std::string_view url);

// The file name up to its last "."; the whole name when it holds none.
std::string withoutExtension(std::string_view fileName);
// The same, writing "mainFileName:::<result>" when the name holds a ".".
std::string displayName(std::string_view fileName);

}  // namespace tunelark
