#include "library/store/FileNames.h"

#include "platform/Console.h"

#include <algorithm>

namespace tunelark {

namespace {

constexpr std::string_view kFileScheme = "file://";

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// "%XX" becomes its byte; a "%" not followed by two hex digits stays as it is.
std::string percentDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            out.push_back(static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2])));
            i += 2;
        } else {
            out.push_back(text[i]);
        }
    }
    return out;
}

}  // namespace

std::string getMainPathFileName(std::string_view text) {
    const auto slash = text.rfind('/');
    const std::size_t p = slash == std::string_view::npos ? 0 : slash + 1;
    const auto dot = text.substr(p).rfind('.');
    const std::size_t q = dot == std::string_view::npos ? p : p + dot + 1;
    const std::string result(q == 0 ? text : text.substr(0, q - 1));
    consoleLine("getMainPathFileName:::" + result);
    return result;
}

std::string fileUrlFromPath(std::string_view absolutePath) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string url(kFileScheme);
    url.reserve(kFileScheme.size() + absolutePath.size() * 3);
    for (const char c : absolutePath) {
        const auto byte = static_cast<unsigned char>(c);
        if (isUnreserved(byte) || byte == '/') {
            url.push_back(c);
        } else {
            url.push_back('%');
            url.push_back(kHex[byte >> 4]);
            url.push_back(kHex[byte & 0x0F]);
        }
    }
    return url;
}

std::string pathFromFileUrl(std::string_view url) {
    if (!url.starts_with(kFileScheme)) return {};
    auto rest = url.substr(kFileScheme.size());
    // The host part is empty or "localhost" for a file on this machine.
    if (rest.starts_with("localhost/")) rest.remove_prefix(std::string_view("localhost").size());
    if (!rest.starts_with('/')) return {};
    return percentDecode(rest);
}

std::string lastComponentDecoded(std::string_view url) {
    const auto slash = url.rfind('/');
    return percentDecode(slash == std::string_view::npos ? url : url.substr(slash + 1));
}

std::string withoutExtension(std::string_view fileName) {
    return std::string(fileName.substr(0, std::min(fileName.rfind('.'), fileName.size())));
}

std::string displayName(std::string_view fileName) {
    std::string result = withoutExtension(fileName);
    if (result.size() != fileName.size()) consoleLine("mainFileName:::" + result);
    return result;
}

}  // namespace tunelark
