#pragma once
#include "platform/PageCall.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tunelark {

// What native code says to the page, built from plain values. Pure functions: any thread.
//
// Text arguments reach the page as exactly the given text (the JSON text, the file path, the name),
// whatever characters it contains; in script form they stand inside a double-quoted string made by
// jsStringContent, so nothing in a file name can end the string early or add script of its own.

std::string setPlayListScript(std::string_view mp3FileItemsJson, std::string_view lrcFileItemsJson);
// The same call from texts that have already been through jsStringContent (large lists are logged in
// that form too, so they are escaped once).
std::string setPlayListScriptFromContents(std::string_view mp3Content, std::string_view lrcContent);
std::string setAllSupportedCharsetNamesScript(std::string_view namesJson);

// The calls of playback and display, sent many times a minute.
PageCall setModeCall(std::string_view playMode);
PageCall setIsPlayingCall(bool playing);
PageCall setPlayingFilePathCall(std::string_view filePath);
PageCall setMainFileNameCall(std::string_view name);
PageCall setDurationCall(std::string_view text);
PageCall setCurrentCall(std::string_view text);
PageCall setSliderCurrentValueCall(std::int64_t value);
PageCall setSpeedCall(std::string_view text);
// The page's lyrics switch and its rows choice: setLyricsSwitches("true","towRows"); and the like.
PageCall setLyricsSwitchesCall(bool on, int displayingRowNum);

}  // namespace tunelark
