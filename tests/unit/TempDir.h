#pragma once
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace tunelark::test {

// A fresh folder, removed afterwards.
struct TempDir {
    TempDir() : TempDir(std::filesystem::temp_directory_path()) {}
    explicit TempDir(const std::filesystem::path& base)
        : path(::mkdtemp((base / "tl-test-XXXXXX").string().data())) {}
    // In memory where the system has such a folder: making thousands of files on a disk takes seconds.
    static std::filesystem::path memoryBase() {
        std::error_code error;
        return std::filesystem::is_directory("/dev/shm", error) && ::access("/dev/shm", W_OK) == 0
                   ? std::filesystem::path("/dev/shm")
                   : std::filesystem::temp_directory_path();
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() { std::error_code ignored; std::filesystem::remove_all(path, ignored); }

    std::string path;
    std::string file(const std::string& name) const { return path + "/" + name; }
};

inline std::string readAll(const std::string& path) {
    return (std::ostringstream() << std::ifstream(path).rdbuf()).str();
}
inline void writeAll(const std::string& path, const std::string& bytes) { std::ofstream(path) << bytes; }

}  // namespace tunelark::test
