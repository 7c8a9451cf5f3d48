#include "page/PageCalls.h"

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

std::string quotedCall(std::string_view function, std::string_view text) {
    std::string script;
    script.reserve(function.size() + text.size() + 5);
    script += function;
    script += "(\"";
    script += jsStringContent(text);
    script += "\");";
    return script;
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

std::string setPlayListScript(std::string_view mp3FileItemsJson, std::string_view lrcFileItemsJson) {
    return setPlayListScriptFromContents(jsStringContent(mp3FileItemsJson), jsStringContent(lrcFileItemsJson));
}

std::string setPlayListScriptFromContents(std::string_view mp3Content, std::string_view lrcContent) {
    std::string script;
    script.reserve(mp3Content.size() + lrcContent.size() + 20);
    script += "setPlayList(\"";
    script += mp3Content;
    script += "\",\"";
    script += lrcContent;
    script += "\");";
    return script;
}

std::string setAllSupportedCharsetNamesScript(std::string_view namesJson) {
    return quotedCall("setAllSupportedCharsetNames", namesJson);
}

std::string setModeScript(std::string_view playMode) { return quotedCall("setMode", playMode); }

std::string setIsPlayingScript(bool playing) { return playing ? "setIsPlaying(true);" : "setIsPlaying(false);"; }

std::string setPlayingFilePathScript(std::string_view filePath) { return quotedCall("setPlayingFilePath", filePath); }

std::string setMainFileNameScript(std::string_view name) { return quotedCall("setMainFileName", name); }

std::string setDurationScript(std::string_view text) { return quotedCall("setDuration", text); }

std::string setCurrentScript(std::string_view text) { return quotedCall("setCurrent", text); }

std::string setSliderCurrentValueScript(std::int64_t value) {
    return "setSliderCurrentValue(" + std::to_string(value) + ");";
}

std::string setSpeedScript(std::string_view text) { return quotedCall("setSpeed", text); }

std::string setLyricsSwitchesScript(bool on, int displayingRowNum) {
    // The texts the page itself posts in "nativeTurnLyricsOn".
    std::string script = on ? "setLyricsSwitches(\"true\"," : "setLyricsSwitches(\"false\",";
    script += displayingRowNum == 2 ? "\"towRows\");" : "\"oneRow\");";
    return script;
}

}  // namespace tunelark
