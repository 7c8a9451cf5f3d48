// The page-call builders given any bytes (file names on Linux may hold any byte but "/" and NUL, and
// the JSON texts hold whatever those names hold). Each script is read back twice, by a script-call
// reader and by a JSON parser over its arguments: the page must receive exactly the text given, with
// bytes that are not UTF-8 shown as U+FFFD, and nothing may follow the call.
#include "FuzzChecks.h"
#include "bridge/JsCallReader.h"
#include "bridge/PageCalls.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <glib.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tunelark {
namespace {

// What the page should hold: GLib's own repair of invalid UTF-8 (one U+FFFD per bad byte). GLib
// treats NUL as invalid, so the text is repaired piece by piece between NULs.
std::string shownText(const std::string& bytes) {
    std::string shown;
    std::size_t start = 0;
    for (;;) {
        const std::size_t nul = bytes.find('\0', start);
        const std::size_t end = nul == std::string::npos ? bytes.size() : nul;
        gchar* valid = g_utf8_make_valid(bytes.data() + start, static_cast<gssize>(end - start));
        shown += valid;
        g_free(valid);
        if (nul == std::string::npos) return shown;
        shown += '\0';
        start = nul + 1;
    }
}

// The arguments of `function(...);` read as a JSON array; nothing when the script has another shape.
std::optional<std::vector<std::string>> jsonArguments(const std::string& script, const std::string& function) {
    const std::string prefix = function + "(";
    if (!script.starts_with(prefix) || !script.ends_with(");")) return std::nullopt;
    const std::string inner = script.substr(prefix.size(), script.size() - prefix.size() - 2);
    const auto json = nlohmann::json::parse("[" + inner + "]", nullptr, false);
    if (!json.is_array()) return std::nullopt;
    std::vector<std::string> arguments;
    for (const auto& item : json) {
        if (!item.is_string()) return std::nullopt;
        arguments.push_back(item.get<std::string>());
    }
    return arguments;
}

void checkScript(const std::string& script, const std::string& function, const std::vector<std::string>& given) {
    std::vector<std::string> expected;
    for (const std::string& text : given) expected.push_back(shownText(text));

    const auto call = test::JsCallReader::read(script);
    fuzz::require(call.has_value(), "the script is one call of string literals and nothing after it");
    fuzz::require(call->function == function, "the script calls the page function");
    fuzz::require(call->arguments == expected, "a script reader gets exactly the given texts");

    const auto arguments = jsonArguments(script, function);
    fuzz::require(arguments.has_value(), "the arguments read as JSON strings");
    fuzz::require(*arguments == expected, "a JSON parser gets exactly the given texts");

    // No "</script>" or "<!--" can form, and no line break or separator stands raw in the script.
    fuzz::require(script.find('<') == std::string::npos, "no raw '<'");
    fuzz::require(script.find_first_of("\n\r") == std::string::npos, "no raw line break");
    fuzz::require(script.find("\xE2\x80\xA8") == std::string::npos && script.find("\xE2\x80\xA9") == std::string::npos,
                  "no raw line or paragraph separator");
}

}  // namespace
}  // namespace tunelark

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tunelark;
    FuzzedDataProvider input(data, size);
    const int builder = input.ConsumeIntegralInRange(0, 8);
    const std::string first = input.ConsumeRandomLengthString();
    const std::string second = input.ConsumeRemainingBytesAsString();

    switch (builder) {
    case 0: {
        const std::string script = setPlayListScript(first, second);
        checkScript(script, "setPlayList", {first, second});
        fuzz::require(script == setPlayListScriptFromContents(jsStringContent(first), jsStringContent(second)),
                      "escaping once ahead gives the same call");
        break;
    }
    case 1: checkScript(setAllSupportedCharsetNamesScript(second), "setAllSupportedCharsetNames", {second}); break;
    case 2: checkScript(setModeScript(second), "setMode", {second}); break;
    case 3: checkScript(setPlayingFilePathScript(second), "setPlayingFilePath", {second}); break;
    case 4: checkScript(setMainFileNameScript(second), "setMainFileName", {second}); break;
    case 5: checkScript(setDurationScript(second), "setDuration", {second}); break;
    case 6: checkScript(setCurrentScript(second), "setCurrent", {second}); break;
    case 7: checkScript(setSpeedScript(second), "setSpeed", {second}); break;
    default: {
        FuzzedDataProvider number(data, size);
        const auto value = number.ConsumeIntegral<std::int64_t>();
        const std::string script = setSliderCurrentValueScript(value);
        const std::string prefix = "setSliderCurrentValue(";
        fuzz::require(script.starts_with(prefix) && script.ends_with(");"), "the slider call");
        const auto arguments =
            nlohmann::json::parse("[" + script.substr(prefix.size(), script.size() - prefix.size() - 2) + "]", nullptr, false);
        fuzz::require(arguments.is_array() && arguments.size() == 1 && arguments[0].is_number_integer() &&
                          arguments[0].get<std::int64_t>() == value,
                      "the slider value reads back as the same integer");
    }
    }
    return 0;
}
