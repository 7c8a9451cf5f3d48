#pragma once
#include <cstddef>
#include <string_view>

namespace tunelark {

// The length of the well-formed UTF-8 sequence that starts at text[at], or 0 when the byte there starts
// none: stray continuation bytes, overlong forms, surrogates, code points above U+10FFFF, cut sequences.
std::size_t utf8SequenceLength(std::string_view text, std::size_t at);

// True when the whole text is well-formed UTF-8.
bool isWellFormedUtf8(std::string_view text);

}  // namespace tunelark
