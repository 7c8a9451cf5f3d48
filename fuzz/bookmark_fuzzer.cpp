// The bookmark reader given foreign bytes, genuine bookmarks of awkwardly named files with one edit, and
// bookmarks made for paths from the input: it may fail, but what it finds is an existing file of that name.
#include "FuzzChecks.h"
#include "library/store/Bookmark.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

using namespace tunelark;
static std::string folder;
static std::vector<std::string> files;

static void check(const Bytes& blob, const std::optional<std::string>& madeFor = std::nullopt) {
    const ResolvedBookmark resolved = resolveBookmark(blob), again = resolveBookmark(blob);
    struct stat info {};
    const std::string& location = resolved.location.value_or("");
    fuzz::require(resolved.location == again.location && resolved.stale == again.stale, "resolving is repeatable");
    fuzz::require(!madeFor || (location == *madeFor && !resolved.stale), "a bookmark finds the file it was made for");
    fuzz::require(resolved.location || resolved.stale, "a failed resolution is stale");
    const bool exists = location.starts_with('/') && stat(location.c_str(), &info) == 0;
    fuzz::require(!resolved.location || exists, "a location is an existing absolute path");
    fuzz::require(location.find('\0') == std::string::npos, "a location holds no NUL: it names one file");
    fuzz::require(resolved.stale || std::string(blob.begin(), blob.end()).find(location) != std::string::npos,
                  "a fresh location is the recorded path");
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string pattern = std::filesystem::temp_directory_path() / "tl-fuzz-bookmark-XXXXXX";
    folder = mkdtemp(pattern.data());
    for (const char* name : {"song.mp3", "two words.lrc", "\xC3\xA9t\xC3\xA9.mp3", "bad\xFF\xFE.mp3", "new\nline"}) {
        std::ofstream(files.emplace_back(folder + "/" + name)) << "x";
    }
    files.push_back(folder);
    return std::atexit([] { std::error_code ignored; std::filesystem::remove_all(folder, ignored); });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange(0, 2);
    if (kind == 0) {
        check(input.ConsumeRemainingBytes<std::uint8_t>());
    } else if (kind == 1) {  // a byte changed, cut short or bytes added
        const std::string& path = files[input.ConsumeIntegralInRange<std::size_t>(0, files.size() - 1)];
        Bytes blob = makeBookmark(path).value_or(Bytes{});
        check(blob, path);
        const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(0, blob.size());
        const int edit = input.ConsumeIntegralInRange(0, 2);
        if (edit == 0 && at < blob.size()) blob[at] = input.ConsumeIntegral<std::uint8_t>();
        if (edit == 1) blob.resize(at);
        const Bytes extra = edit == 2 ? input.ConsumeRemainingBytes<std::uint8_t>() : Bytes{};
        blob.insert(blob.begin() + static_cast<std::ptrdiff_t>(at), extra.begin(), extra.end());
        check(blob);
    } else {  // a path in the folder or anywhere
        const std::string path = (input.ConsumeBool() ? folder + "/" : "") + input.ConsumeRemainingBytesAsString();
        std::string error;
        const std::optional<Bytes> blob = makeBookmark(path, &error);
        fuzz::require(blob || !error.empty(), "a refused bookmark says why");
        if (blob) check(*blob, path);
    }
    return 0;
}
