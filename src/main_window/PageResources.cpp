#include "main_window/PageResources.h"

#include <system_error>

namespace tunelark {
namespace {

namespace fs = std::filesystem;

bool isRegularFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

fs::path realPath(const fs::path& path) {
    std::error_code error;
    auto real = fs::canonical(path, error);
    return error ? fs::absolute(path, error).lexically_normal() : real;
}

}  // namespace

std::string ResourceSearch::failureMessage() const {
    std::string message = "tunelark: cannot find the page www/index.html; looked for index.html and www/index.html in:";
    for (const auto& folder : searched) message += " " + folder.string();
    return message;
}

ResourceSearch findPageResources(const fs::path& executable) {
    const fs::path dir = realPath(executable).parent_path();
    ResourceSearch search;
    search.searched = {dir / "resources", (dir / ".." / "share" / "tunelark").lexically_normal()};
    for (const auto& folder : search.searched) {
        if (!isRegularFile(folder / "index.html")) continue;
        PageResources found{folder, folder / "www", folder / "www" / "index.html", folder / "tunelark.appinfo"};
        if (isRegularFile(found.page)) search.found = std::move(found);
        break;  // the marker decides the folder; without its page the program cannot run
    }
    return search;
}

}  // namespace tunelark
