#include "platform/Utf8.h"

namespace tunelark {

std::size_t utf8SequenceLength(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[at + k]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return 1;
    std::size_t length = 0;
    unsigned char secondLow = 0x80;
    unsigned char secondHigh = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) secondLow = 0xA0;   // shorter forms fit in two bytes
        if (lead == 0xED) secondHigh = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) secondLow = 0x90;
        if (lead == 0xF4) secondHigh = 0x8F;  // beyond U+10FFFF
    } else {
        return 0;
    }
    if (at + length > text.size() || byte(1) < secondLow || byte(1) > secondHigh) return 0;
    for (std::size_t k = 2; k < length; ++k) {
        if ((byte(k) & 0xC0) != 0x80) return 0;
    }
    return length;
}

bool isWellFormedUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8SequenceLength(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

}  // namespace tunelark
