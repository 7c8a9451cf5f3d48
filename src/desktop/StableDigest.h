#pragma once
#include <string>
#include <string_view>

namespace tunelark {

// FNV-1a over the bytes as 16 hex digits: the same on every run, and only [0-9a-f], so it serves as a
// file name and as an element of a bus object path.
std::string stableDigest(std::string_view bytes);

}  // namespace tunelark
