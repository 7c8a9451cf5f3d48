#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace tunelark {

// The scripts native code runs in the page, built from plain values. Pure functions: any thread.
//
// Text arguments stand inside a double-quoted script string. After the page has read that string it
// holds exactly the given text (the JSON text, the file path, the name), whatever characters it
// contains: nothing in a file name can end the string early or add script of its own.

// The text to put between the double quotes of a script string. Double quotes and backslashes get a
// backslash; line breaks, other control characters, U+2028, U+2029 and "<" become escapes (so
// "</script>" never appears); each byte that is not part of valid UTF-8 becomes U+FFFD. Other text,
// non-ASCII included, is kept as it is.
std::string jsStringContent(std::string_view text);

std::string setPlayListScript(std::string_view mp3FileItemsJson, std::string_view lrcFileItemsJson);
// The same call from texts that have already been through jsStringContent (large lists are logged in
// that form too, so they are escaped once).
std::string setPlayListScriptFromContents(std::string_view mp3Content, std::string_view lrcContent);
std::string setAllSupportedCharsetNamesScript(std::string_view namesJson);
std::string setModeScript(std::string_view playMode);
std::string setIsPlayingScript(bool playing);
std::string setPlayingFilePathScript(std::string_view filePath);
std::string setMainFileNameScript(std::string_view name);
std::string setDurationScript(std::string_view text);
std::string setCurrentScript(std::string_view text);
std::string setSliderCurrentValueScript(std::int64_t value);
std::string setSpeedScript(std::string_view text);
// The page's lyrics switch and its rows choice: setLyricsSwitches("true","towRows"); and the like.
std::string setLyricsSwitchesScript(bool on, int displayingRowNum);

}  // namespace tunelark
