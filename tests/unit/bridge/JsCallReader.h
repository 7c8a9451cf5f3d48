#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tunelark::test {

// Reads a page-call script the way a script engine would, for the narrow form native code emits:
// `name("text", "text", ...);` with double-quoted string literals only. Gives the texts the page
// receives, or nothing when the script has any other shape (a literal ended early, a raw line break
// inside a literal, an unknown escape, something after the call), which is what an injection looks like.
class JsCallReader {
public:
    struct Call {
        std::string function;
        std::vector<std::string> arguments;
    };

    static std::optional<Call> read(std::string_view script) {
        JsCallReader reader(script);
        return reader.call();
    }

private:
    explicit JsCallReader(std::string_view script) : s_(script) {}

    std::optional<Call> call() {
        Call result;
        while (pos_ < s_.size() && isIdentifier(s_[pos_])) result.function += s_[pos_++];
        if (result.function.empty() || !take('(')) return std::nullopt;
        while (true) {
            auto text = literal();
            if (!text) return std::nullopt;
            result.arguments.push_back(*text);
            if (take(',')) continue;
            if (!take(')') || !take(';') || pos_ != s_.size()) return std::nullopt;
            return result;
        }
    }

    std::optional<std::string> literal() {
        if (!take('"')) return std::nullopt;
        std::string out;
        while (pos_ < s_.size()) {
            const char c = s_[pos_++];
            if (c == '"') return out;
            if (c == '\n' || c == '\r' || startsSeparator()) return std::nullopt;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (!escape(out)) return std::nullopt;
        }
        return std::nullopt;
    }

    bool escape(std::string& out) {
        if (pos_ >= s_.size()) return false;
        const char e = s_[pos_++];
        switch (e) {
        case '"': out += '"'; return true;
        case '\'': out += '\''; return true;
        case '\\': out += '\\'; return true;
        case 'n': out += '\n'; return true;
        case 'r': out += '\r'; return true;
        case 't': out += '\t'; return true;
        case 'b': out += '\b'; return true;
        case 'f': out += '\f'; return true;
        case 'v': out += '\v'; return true;
        case 'x': return hexCode(2, out);
        case 'u': return unicodeEscape(out);
        default: return false;  // anything else would be legal script but is never what we emit
        }
    }

    bool unicodeEscape(std::string& out) {
        auto unit = hex(4);
        if (!unit) return false;
        std::uint32_t code = *unit;
        if (code >= 0xD800 && code <= 0xDBFF) {
            if (!take('\\') || !take('u')) return false;
            auto low = hex(4);
            if (!low || *low < 0xDC00 || *low > 0xDFFF) return false;
            code = 0x10000 + ((code - 0xD800) << 10) + (*low - 0xDC00);
        } else if (code >= 0xDC00 && code <= 0xDFFF) {
            return false;
        }
        appendUtf8(out, code);
        return true;
    }

    bool hexCode(int digits, std::string& out) {
        auto code = hex(digits);
        if (!code) return false;
        appendUtf8(out, *code);
        return true;
    }

    std::optional<std::uint32_t> hex(int digits) {
        std::uint32_t value = 0;
        for (int i = 0; i < digits; ++i) {
            if (pos_ >= s_.size()) return std::nullopt;
            const char c = s_[pos_++];
            int d = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
            if (d < 0) return std::nullopt;
            value = value * 16 + static_cast<std::uint32_t>(d);
        }
        return value;
    }

    // U+2028 and U+2029 (E2 80 A8 / E2 80 A9), the raw byte at pos_ - 1 being E2.
    bool startsSeparator() const {
        const std::size_t at = pos_ - 1;
        return s_.substr(at, 3) == "\xE2\x80\xA8" || s_.substr(at, 3) == "\xE2\x80\xA9";
    }

    static void appendUtf8(std::string& out, std::uint32_t code) {
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }

    static bool isIdentifier(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    }

    bool take(char c) {
        if (pos_ < s_.size() && s_[pos_] == c) {
            ++pos_;
            return true;
        }
        return false;
    }

    std::string_view s_;
    std::size_t pos_ = 0;
};

}  // namespace tunelark::test
