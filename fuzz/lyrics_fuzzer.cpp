// Lyric bytes as a lyric file gives them: the encoding chosen from a stored name (from the catalogue, unknown or
// none), the bytes decoded and parsed, the timeline walked. Input: name, language, positions, the file.
#include "FuzzChecks.h"
#include "engine/lyrics/CharsetEnum.h"
#include "engine/lyrics/LrcTimeline.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>

using namespace tunelark;

// The walk agrees with its definition: later is the first entry still to come, current the one before it.
static void checkWalk(const LrcTimeline& timeline, double position) {
    const auto later = timeline.laterLine(position), current = timeline.currentLine(position);
    const std::size_t firstToCome = later.value_or(timeline.size());
    fuzz::require(timeline.empty() == !current && (current || !later) && (!later || *later < timeline.size()), "range");
    fuzz::require(!current || *current == std::max<std::size_t>(firstToCome, 1) - 1, "current is the one before");
    for (std::size_t i = 0; i <= firstToCome && i < timeline.size(); ++i) {
        fuzz::require((position < timeline.timeLineArray[i] - 0.02) == (i == firstToCome), "the first to come");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = std::freopen("/dev/null", "w", stdout);  // millions of console lines help nobody
    FuzzedDataProvider input(data, size);
    const int pick = input.ConsumeIntegral<std::uint8_t>() % (kCharsetCount + 2);
    std::optional<std::string> stored = "gbk";  // unknown: the language's default decodes
    if (pick < kCharsetCount) stored = charsetName(static_cast<CharsetEnum>(pick));
    if (pick == kCharsetCount) stored.reset();
    const std::string language = input.ConsumeBool() ? "zh-Hans-CN" : "en-US";
    std::vector<double> positions(input.ConsumeIntegralInRange(0, 4));
    for (double& position : positions) position = input.ConsumeFloatingPoint<double>();
    const std::string bytes = input.ConsumeRemainingBytesAsString();

    const ChosenCharset chosen = chooseCharset(stored, language);
    fuzz::require(quiet && chosen.shownName == stored.value_or(defaultCharsetName(language)), "the shown name");
    const std::optional<std::string> text = decodeLyrics(bytes, chosen.charset);
    const std::optional<std::string> asUtf8 = fuzz::isValidUtf8(bytes) ? std::optional(bytes) : std::nullopt;
    fuzz::require(chosen.charset != CharsetEnum::utf8 || text == asUtf8, "utf8 takes exactly valid UTF-8, as it is");
    if (!text) return 0;
    LrcTimeline timeline, again;
    timeline.parse(*text);
    again.parse(*text);
    const std::vector<double>& times = timeline.timeLineArray;
    fuzz::require(fuzz::isValidUtf8(*text) && times.size() == timeline.wordLineArray.size(), "UTF-8, paired lines");
    fuzz::require(times.size() == again.size() && timeline.wordLineArray == again.wordLineArray &&
                      (times.empty() || !std::memcmp(times.data(), again.timeLineArray.data(), times.size() * 8)),
                  "parsing twice gives the same timeline, bit for bit");
    for (const std::string& line : timeline.wordLineArray) {
        fuzz::require(fuzz::isValidUtf8(line) && line.find_first_of("\r\n") == std::string::npos, "UTF-8, no line end");
    }
    for (double position : positions) checkWalk(timeline, position);
    for (std::size_t i = 0; i < times.size() && i < 64; ++i) {  // the positions the clock meets
        for (double offset : {0.0, 0.02, 0.019, 0.021}) checkWalk(timeline, times[i] - offset);
    }
    return 0;
}
