#include "page/PageCalls.h"

namespace tunelark {

namespace {

PageCall textCall(const char* function, std::string_view text) { return PageCall{function, {std::string(text)}}; }

}  // namespace

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
    return textCall("setAllSupportedCharsetNames", namesJson).script();
}

PageCall setModeCall(std::string_view playMode) { return textCall("setMode", playMode); }

PageCall setIsPlayingCall(bool playing) { return PageCall{"setIsPlaying", {playing}}; }

PageCall setPlayingFilePathCall(std::string_view filePath) { return textCall("setPlayingFilePath", filePath); }

PageCall setMainFileNameCall(std::string_view name) { return textCall("setMainFileName", name); }

PageCall setDurationCall(std::string_view text) { return textCall("setDuration", text); }

PageCall setCurrentCall(std::string_view text) { return textCall("setCurrent", text); }

PageCall setSliderCurrentValueCall(std::int64_t value) { return PageCall{"setSliderCurrentValue", {value}}; }

PageCall setSpeedCall(std::string_view text) { return textCall("setSpeed", text); }

PageCall setLyricsSwitchesCall(bool on, int displayingRowNum) {
    // The texts the page itself posts in "nativeTurnLyricsOn".
    return PageCall{"setLyricsSwitches",
                    {std::string(on ? "true" : "false"), std::string(displayingRowNum == 2 ? "towRows" : "oneRow")}};
}

}  // namespace tunelark
