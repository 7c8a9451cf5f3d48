#pragma once
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tunelark::test {

// A fresh folder, removed afterwards.
struct TempDir {
    std::string path = ::mkdtemp((std::filesystem::temp_directory_path() / "tl-test-XXXXXX").string().data());
    ~TempDir() { std::error_code ignored; std::filesystem::remove_all(path, ignored); }
    std::string file(const std::string& name) const { return path + "/" + name; }
};

inline std::string readAll(const std::string& path) {
    return (std::ostringstream() << std::ifstream(path).rdbuf()).str();
}
inline void writeAll(const std::string& path, const std::string& bytes) { std::ofstream(path) << bytes; }

}  // namespace tunelark::test
