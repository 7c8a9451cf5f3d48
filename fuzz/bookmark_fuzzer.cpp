// The bookmark reader given any blob: foreign bytes, genuine bookmarks of a few files with one edit
// (a byte changed, cut short, bytes added), and bookmarks made for paths from the input. A resolution
// may fail, but never crash, and what it finds must be a file that exists under exactly that name.
#include "FuzzChecks.h"
#include "library/store/Bookmark.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tunelark {
namespace {

// A folder of files with awkward names, made once per run.
struct Fixture {
    Fixture() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tl-fuzz-bookmark-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        for (const char* name : {"song.mp3", "two words.lrc", "\xC3\xA9t\xC3\xA9.mp3", "bad\xFF\xFE.mp3", "new\nline"}) {
            files.push_back(folder + "/" + name);
            std::ofstream(files.back()) << "x";
        }
        files.push_back(folder);
    }
    ~Fixture() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string folder;
    std::vector<std::string> files;
};

Fixture* fixture = nullptr;

void checkResolution(const Bytes& blob) {
    const ResolvedBookmark resolved = resolveBookmark(blob);
    const ResolvedBookmark again = resolveBookmark(blob);
    fuzz::require(resolved.location == again.location && resolved.stale == again.stale, "resolving is repeatable");
    if (!resolved.location) {
        fuzz::require(resolved.stale, "a failed resolution is stale");
        return;
    }
    const std::string& location = *resolved.location;
    fuzz::require(location.starts_with('/'), "a location is an absolute path");
    fuzz::require(location.find('\0') == std::string::npos, "a location holds no NUL, so it names one file");
    struct stat info {};
    fuzz::require(stat(location.c_str(), &info) == 0, "a location exists");
    if (!resolved.stale) {
        const std::string bytes(blob.begin(), blob.end());
        fuzz::require(bytes.find(location) != std::string::npos, "a fresh location is the recorded path");
    }
}

}  // namespace
}  // namespace tunelark

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    tunelark::fixture = new tunelark::Fixture;
    std::atexit([] { delete tunelark::fixture; });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tunelark;
    FuzzedDataProvider input(data, size);
    switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0: {  // foreign bytes
        const std::vector<std::uint8_t> blob = input.ConsumeRemainingBytes<std::uint8_t>();
        checkResolution(blob);
        break;
    }
    case 1: {  // a genuine bookmark with one edit
        const std::string& path = fixture->files[input.ConsumeIntegralInRange<std::size_t>(0, fixture->files.size() - 1)];
        std::optional<Bytes> blob = makeBookmark(path);
        fuzz::require(blob.has_value(), "a bookmark of an existing file");
        const ResolvedBookmark fresh = resolveBookmark(*blob);
        fuzz::require(fresh.location == path && !fresh.stale, "an unchanged bookmark finds its file");
        const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(0, blob->size());
        switch (input.ConsumeIntegralInRange(0, 2)) {
        case 0:
            if (at < blob->size()) (*blob)[at] = input.ConsumeIntegral<std::uint8_t>();
            break;
        case 1: blob->resize(at); break;
        default: {
            const auto extra = input.ConsumeRemainingBytes<std::uint8_t>();
            blob->insert(blob->begin() + static_cast<std::ptrdiff_t>(at), extra.begin(), extra.end());
        }
        }
        checkResolution(*blob);
        break;
    }
    default: {  // a bookmark made for a path from the input, in the fixture's folder or anywhere
        std::string path = input.ConsumeBool() ? fixture->folder + "/" : "";
        path += input.ConsumeRemainingBytesAsString();
        std::string error;
        if (std::optional<Bytes> blob = makeBookmark(path, &error)) {
            const ResolvedBookmark resolved = resolveBookmark(*blob);
            fuzz::require(resolved.location == path && !resolved.stale, "a bookmark finds the file it was made for");
            checkResolution(*blob);
        } else {
            fuzz::require(!error.empty(), "a refused bookmark says why");
        }
    }
    }
    return 0;
}
