#include "main_window/PageFolder.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isInside(const fs::path& folder, const fs::path& path) {
    // Compared by components, so that a sibling "www2" is not taken for part of "www".
    auto [folderEnd, pathAt] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return folderEnd == folder.end() && pathAt != path.end();
}

}  // namespace

PageFolder::PageFolder(const fs::path& folder) {
    std::error_code error;
    auto real = fs::canonical(folder, error);
    if (!error) folder_ = real;
}

std::optional<std::string> PageFolder::percentDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0 || (high == 0 && low == 0)) return std::nullopt;
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}

std::optional<fs::path> PageFolder::resolve(std::string_view requestPath) const {
    if (folder_.empty()) return std::nullopt;
    auto decoded = percentDecode(requestPath);
    if (!decoded) return std::nullopt;
    const auto relative = fs::path(*decoded).relative_path();  // "/x" names x inside the folder
    if (relative.empty()) return std::nullopt;
    std::error_code error;
    const auto real = fs::canonical(folder_ / relative, error);
    if (error || !isInside(folder_, real) || !fs::is_regular_file(real, error)) return std::nullopt;
    return real;
}

}  // namespace tunelark
