#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

// Where the page and its companions live.
struct PageResources {
    std::filesystem::path resourceFolder;  // the folder that holds the marker index.html
    std::filesystem::path pageFolder;      // resourceFolder/www: all the page may read
    std::filesystem::path page;            // pageFolder/index.html
    std::filesystem::path appInfo;         // resourceFolder/tunelark.appinfo (may be absent)
};

// The outcome of looking for the resources beside an executable.
struct ResourceSearch {
    std::optional<PageResources> found;
    std::vector<std::filesystem::path> searched;  // the folders looked at, in order
    std::string failureMessage() const;           // names the folders searched
};

// Looks from the executable's real path: <dir>/resources/ in the build tree, else
// <dir>/../share/tunelark/ when installed. The first of them holding index.html is the resource folder;
// it must hold www/index.html too.
ResourceSearch findPageResources(const std::filesystem::path& executable);

}  // namespace tunelark
