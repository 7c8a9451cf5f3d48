// The page-call builders given any bytes (file names may hold any byte but "/" and NUL), each script read back
// by a script-call reader and by a JSON parser: the page gets exactly the given text, bytes that are not UTF-8
// as U+FFFD, and nothing can follow the call or close the script element.
#include "FuzzChecks.h"
#include "page/JsCallReader.h"
#include "page/PageCalls.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <glib.h>

using namespace tunelark;

// GLib's own repair of invalid UTF-8 (one U+FFFD per bad byte); GLib counts NUL as invalid, so piece by piece.
static std::string shownText(const std::string& bytes) {
    std::string shown;
    for (std::size_t start = 0, nul; start <= bytes.size(); start = nul + 1) {
        nul = std::min(bytes.find('\0', start), bytes.size());
        gchar* valid = g_utf8_make_valid(bytes.data() + start, static_cast<gssize>(nul - start));
        shown += valid + std::string(nul < bytes.size(), '\0');
        g_free(valid);
    }
    return shown;
}

// The arguments of `function(...);` read as one JSON array.
static nlohmann::json jsonArguments(const std::string& script, const std::string& function) {
    fuzz::require(script.starts_with(function + "(") && script.ends_with(");"), "the script calls the page function");
    const std::string inner = script.substr(function.size() + 1, script.size() - function.size() - 3);
    return nlohmann::json::parse("[" + inner + "]", nullptr, false);
}

static void check(const std::string& script, const std::string& function, const std::vector<std::string>& given) {
    std::vector<std::string> expected;
    for (const std::string& text : given) expected.push_back(shownText(text));
    const auto call = test::JsCallReader::read(script);
    fuzz::require(call && call->function == function && call->arguments == expected, "a script reader gets the texts");
    fuzz::require(jsonArguments(script, function) == nlohmann::json(expected), "a JSON parser gets the given texts");
    fuzz::require(script.find_first_of("<\n\r") == std::string::npos && script.find("\u2028") == std::string::npos &&
                      script.find("\u2029") == std::string::npos,
                  "no raw '<', line break, line or paragraph separator");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::pair<const char*, std::string (*)(std::string_view)> builders[] = {
        {"setAllSupportedCharsetNames", setAllSupportedCharsetNamesScript}, {"setMode", [](std::string_view t) { return setModeCall(t).script(); }},
        {"setPlayingFilePath", [](std::string_view t) { return setPlayingFilePathCall(t).script(); }}, {"setMainFileName", [](std::string_view t) { return setMainFileNameCall(t).script(); }},
        {"setDuration", [](std::string_view t) { return setDurationCall(t).script(); }}, {"setCurrent", [](std::string_view t) { return setCurrentCall(t).script(); }}, {"setSpeed", [](std::string_view t) { return setSpeedCall(t).script(); }}};
    FuzzedDataProvider input(data, size);
    const int builder = input.ConsumeIntegralInRange(0, 8);
    const std::string first = input.ConsumeRandomLengthString();
    const std::string text = input.ConsumeRemainingBytesAsString();
    if (builder == 0) {
        check(setPlayListScript(first, text), "setPlayList", {first, text});
        fuzz::require(setPlayListScript(first, text) ==
                          setPlayListScriptFromContents(jsStringContent(first), jsStringContent(text)),
                      "escaping once ahead gives the same call");
    } else if (builder < 8) {
        check(builders[builder - 1].second(text), builders[builder - 1].first, {text});
    } else {
        const auto value = FuzzedDataProvider(data, size).ConsumeIntegral<std::int64_t>();
        const auto read = jsonArguments(setSliderCurrentValueCall(value).script(), "setSliderCurrentValue");
        fuzz::require(read.is_array() && read.size() == 1 && read[0].is_number_integer() && read[0] == value,
                      "the slider value reads back as the same integer");
    }
    return 0;
}
