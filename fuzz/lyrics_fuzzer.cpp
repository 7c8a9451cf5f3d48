// Lyric bytes as a lyric file gives them: the encoding chosen from a catalogue index (or a stored name
// outside the catalogue, or none), the bytes decoded, the text parsed, and the timeline walked at a few
// positions. Input: one byte choosing the stored name, one the language, eight bytes per position (up to
// four), then the file's bytes.
#include "FuzzChecks.h"
#include "engine/lyrics/CharsetEnum.h"
#include "engine/lyrics/LrcTimeline.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {
namespace {

std::optional<std::string> storedName(std::uint8_t pick) {
    const int index = pick % (kCharsetCount + 2);
    if (index < kCharsetCount) return std::string(charsetName(static_cast<CharsetEnum>(index)));
    if (index == kCharsetCount) return std::nullopt;
    return std::string("gbk");  // not a catalogue name: the language's default decodes
}

bool sameTimeline(const LrcTimeline& a, const LrcTimeline& b) {
    if (a.size() != b.size() || a.wordLineArray != b.wordLineArray) return false;
    // Bit for bit: an infinite time must come out the same way twice.
    return a.empty() || std::memcmp(a.timeLineArray.data(), b.timeLineArray.data(), a.size() * sizeof(double)) == 0;
}

// The walk's answers lie in the timeline and agree with the definition of the first entry still to come.
void checkWalk(const LrcTimeline& timeline, double position) {
    const std::optional<std::size_t> later = timeline.laterLine(position);
    const std::optional<std::size_t> current = timeline.currentLine(position);
    if (timeline.empty()) {
        fuzz::require(!later && !current, "an empty timeline has no lines");
        return;
    }
    fuzz::require(current && *current < timeline.size(), "the current line lies in the timeline");
    if (later) {
        fuzz::require(*later < timeline.size(), "the later line lies in the timeline");
        fuzz::require(position < timeline.timeLineArray[*later] - 0.02, "the later line is still to come");
    }
    const std::size_t passed = later ? *later : timeline.size();
    for (std::size_t i = 0; i < passed; ++i) {
        fuzz::require(!(position < timeline.timeLineArray[i] - 0.02), "no earlier line is still to come");
    }
    const std::size_t expected = !later ? timeline.size() - 1 : (*later == 0 ? 0 : *later - 1);
    fuzz::require(*current == expected, "the current line is the one before the first still to come");
}

}  // namespace
}  // namespace tunelark

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    tunelark::fuzz::silenceConsole();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tunelark;
    FuzzedDataProvider input(data, size);
    const std::optional<std::string> stored = storedName(input.ConsumeIntegral<std::uint8_t>());
    const std::string language = input.ConsumeBool() ? "zh-Hans-CN" : "en-US";
    std::vector<double> positions(input.ConsumeIntegralInRange<int>(0, 4));
    for (double& position : positions) position = input.ConsumeFloatingPoint<double>();
    const std::string bytes = input.ConsumeRemainingBytesAsString();

    const ChosenCharset chosen = chooseCharset(stored, language);
    fuzz::require(chosen.shownName == stored.value_or(defaultCharsetName(language)), "the shown name");
    const std::optional<std::string> text = decodeLyrics(bytes, chosen.charset);
    if (chosen.charset == CharsetEnum::utf8) {
        // Strict UTF-8 keeps valid text as it is and refuses anything else.
        fuzz::require(text.has_value() == fuzz::isValidUtf8(bytes), "utf8 accepts exactly valid UTF-8");
        fuzz::require(!text || *text == bytes, "utf8 keeps the bytes");
    }
    if (!text) return 0;
    fuzz::require(fuzz::isValidUtf8(*text), "decoded text is valid UTF-8");

    LrcTimeline timeline;
    timeline.lrcString = *text;
    timeline.parse(*text);
    fuzz::require(timeline.timeLineArray.size() == timeline.wordLineArray.size(), "times and texts pair up");
    for (const std::string& line : timeline.wordLineArray) {
        fuzz::require(fuzz::isValidUtf8(line), "every entry's text is valid UTF-8");
        fuzz::require(line.find('\n') == std::string::npos && line.find('\r') == std::string::npos,
                      "an entry's text holds no line end");
    }
    LrcTimeline again;
    again.parse(*text);
    fuzz::require(sameTimeline(timeline, again), "parsing twice gives the same timeline");

    for (double position : positions) checkWalk(timeline, position);
    if (!timeline.empty()) {
        // The positions the clock meets: each entry's own time and just around it.
        for (std::size_t i = 0; i < timeline.size() && i < 64; ++i) {
            const double t = timeline.timeLineArray[i];
            for (double position : {t, t - 0.02, t - 0.019, t - 0.021}) checkWalk(timeline, position);
        }
    }
    return 0;
}
