#pragma once
#include <filesystem>
#include <optional>
#include <string_view>

namespace tunelark {

// The only files the page may read: regular files whose real path lies inside its folder.
class PageFolder {
public:
    explicit PageFolder(const std::filesystem::path& folder);

    // The file a request path names ("/index.html", "/js/main.js", percent-encoded as in a URL), or
    // nothing for anything else: "..", encoded or not, links that lead out, folders, missing files.
    std::optional<std::filesystem::path> resolve(std::string_view requestPath) const;

    // Decodes %XX escapes; nothing when an escape is malformed or decodes to a NUL byte.
    static std::optional<std::string> percentDecode(std::string_view text);

private:
    std::filesystem::path folder_;  // real path, or empty when the folder does not exist
};

}  // namespace tunelark
