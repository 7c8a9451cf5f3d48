#include "library/store/Bookmark.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <span>

namespace tunelark {

namespace {

// Record layout, little-endian: magic "TLBK", version byte, path length (u32), path bytes, device (u64),
// inode (u64). A new layout gets a new version; resolving refuses versions it does not know.
constexpr std::array<std::uint8_t, 4> kMagic{'T', 'L', 'B', 'K'};
constexpr std::uint8_t kVersion = 1;

struct BookmarkRecord {
    std::string path;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

void putInteger(Bytes& out, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

// Reads a record from untrusted bytes: every read is checked against the end.
class ByteReader {
public:
    explicit ByteReader(const Bytes& bytes) : rest_(bytes) {}

    std::optional<std::span<const std::uint8_t>> take(std::size_t size) {
        if (size > rest_.size()) return std::nullopt;
        auto taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }
    std::optional<std::uint64_t> integer(int size) {
        auto bytes = take(static_cast<std::size_t>(size));
        if (!bytes) return std::nullopt;
        std::uint64_t value = 0;
        for (int i = size - 1; i >= 0; --i) value = (value << 8) | (*bytes)[static_cast<std::size_t>(i)];
        return value;
    }
    bool atEnd() const { return rest_.empty(); }

private:
    std::span<const std::uint8_t> rest_;
};

std::optional<BookmarkRecord> readRecord(const Bytes& bytes) {
    ByteReader reader(bytes);
    auto magic = reader.take(kMagic.size());
    if (!magic || !std::equal(magic->begin(), magic->end(), kMagic.begin())) return std::nullopt;
    auto version = reader.integer(1);
    if (!version || *version != kVersion) return std::nullopt;
    auto length = reader.integer(4);
    if (!length) return std::nullopt;
    auto path = reader.take(*length);
    auto device = reader.integer(8);
    auto inode = reader.integer(8);
    if (!path || !device || !inode || !reader.atEnd()) return std::nullopt;
    BookmarkRecord record{std::string(path->begin(), path->end()), *device, *inode};
    // A NUL would cut the path short in every system call: the record would name another file.
    if (record.path.empty() || record.path.front() != '/' || record.path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return record;
}

struct DirCloser {
    void operator()(DIR* dir) const noexcept { closedir(dir); }
};

// The file in the record's folder that is still the same file (same device and inode), if any.
std::optional<std::string> findRenamed(const BookmarkRecord& record) {
    const auto slash = record.path.rfind('/');
    const std::string folder = slash == 0 ? "/" : record.path.substr(0, slash);
    std::unique_ptr<DIR, DirCloser> dir(opendir(folder.c_str()));
    if (!dir) return std::nullopt;
    while (const dirent* entry = readdir(dir.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        struct stat info {};
        if (fstatat(dirfd(dir.get()), entry->d_name, &info, 0) != 0) continue;
        if (static_cast<std::uint64_t>(info.st_dev) == record.device &&
            static_cast<std::uint64_t>(info.st_ino) == record.inode) {
            return (folder == "/" ? folder : folder + "/") + std::string(name);
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<Bytes> makeBookmark(const std::string& absolutePath, std::string* error) {
    auto fail = [&](const std::string& why) -> std::optional<Bytes> {
        if (error) *error = "Can not make a bookmark for " + absolutePath + ": " + why;
        return std::nullopt;
    };
    if (absolutePath.empty() || absolutePath.front() != '/') return fail("not an absolute path");
    if (absolutePath.find('\0') != std::string::npos) return fail("the path holds a NUL byte");
    if (absolutePath.size() > UINT32_MAX) return fail("path too long");
    struct stat info {};
    if (stat(absolutePath.c_str(), &info) != 0) return fail(std::strerror(errno));

    Bytes out(kMagic.begin(), kMagic.end());
    out.push_back(kVersion);
    putInteger(out, absolutePath.size(), 4);
    out.insert(out.end(), absolutePath.begin(), absolutePath.end());
    putInteger(out, static_cast<std::uint64_t>(info.st_dev), 8);
    putInteger(out, static_cast<std::uint64_t>(info.st_ino), 8);
    return out;
}

ResolvedBookmark resolveBookmark(const Bytes& bookmark) {
    auto record = readRecord(bookmark);
    if (!record) return {};
    struct stat info {};
    if (stat(record->path.c_str(), &info) == 0) return {record->path, false};
    // Renamed within its folder: found, but no longer what the entry names.
    return {findRenamed(*record), true};
}

bool startAccessing(const std::string& location) {
    // Non-blocking: opening a named pipe put in the file's place would wait for a writer. Only a regular
    // file is granted, since reading a pipe or a device may never end.
    const int fd = open(location.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat info {};
    const bool regular = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    close(fd);
    return regular;
}

// Access is not scoped on this platform: nothing to give back.
void stopAccessing(const std::string&) {}

}  // namespace tunelark
