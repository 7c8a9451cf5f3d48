#include "platform/PageCall.h"

#include "platform/Utf8.h"

#include <array>
#include <cstdio>

namespace tunelark {

namespace {

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

void appendUnicodeEscape(std::string& out, unsigned code) {
    std::array<char, 8> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "\\u%04x", code);
    out += buffer.data();
}

void appendAsciiEscaped(std::string& out, char c) {
    switch (c) {
    case '"': out += "\\\""; break;
    case '\\': out += "\\\\"; break;
    case '\n': out += "\\n"; break;
    case '\r': out += "\\r"; break;
    case '\t': out += "\\t"; break;
    // "<" never reaches the page as itself, so no "</script>" or "<!--" can form in the script text.
    case '<': appendUnicodeEscape(out, '<'); break;
    default:
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            appendUnicodeEscape(out, static_cast<unsigned char>(c));
        } else {
            out += c;
        }
    }
}

}  // namespace

std::string jsStringContent(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8SequenceLength(text, i);
        if (length == 0) {
            out += kReplacementCharacter;
            ++i;
        } else if (length == 1) {
            appendAsciiEscaped(out, text[i]);
            ++i;
        } else {
            const std::string_view sequence = text.substr(i, length);
            // Line and paragraph separators end a string literal in older script engines.
            if (sequence == "\xE2\x80\xA8") {
                appendUnicodeEscape(out, 0x2028);
            } else if (sequence == "\xE2\x80\xA9") {
                appendUnicodeEscape(out, 0x2029);
            } else {
                out += sequence;
            }
            i += length;
        }
    }
    return out;
}

std::string PageCall::script() const {
    std::string out = function;
    out += '(';
    bool first = true;
    for (const PageValue& argument : arguments) {
        if (!first) out += ',';
        first = false;
        if (const auto* flag = std::get_if<bool>(&argument)) {
            out += *flag ? "true" : "false";
        } else if (const auto* number = std::get_if<std::int64_t>(&argument)) {
            out += std::to_string(*number);
        } else {
            out += '"';
            out += jsStringContent(std::get<std::string>(argument));
            out += '"';
        }
    }
    out += ");";
    return out;
}

}  // namespace tunelark
