// Prints how long lyric decoding and parsing take: a 10,000-line file in GB18030 and in UTF-8, and the
// parse of a 10 MB file. Figures only; nothing here passes or fails.
#include "engine/lyrics/CharsetEnum.h"
#include "engine/lyrics/LrcTimeline.h"

#include <iconv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

using tunelark::CharsetEnum;
using tunelark::LrcTimeline;

// Lines that mix a time tag, Chinese and Latin text, as lyric files of the target users do.
std::string makeLyrics(std::size_t lines) {
    static const char* const kWords[] = {"月亮代表我的心", "Hello again", "你问我爱你有多深", "la la la",
                                         "轻轻的一个吻", "已经打动我的心"};
    std::string text = "[ti:Bench]\n[ar:Nobody]\n";
    char tag[32];
    for (std::size_t i = 0; i < lines; ++i) {
        const double seconds = static_cast<double>(i) * 0.37;
        std::snprintf(tag, sizeof tag, "[%02d:%05.2f]", static_cast<int>(seconds / 60), seconds - 60 * static_cast<int>(seconds / 60));
        text += tag;
        text += kWords[i % 6];
        text += ' ';
        text += kWords[(i * 7 + 3) % 6];
        text += "\r\n";
    }
    return text;
}

std::string encodeAs(const char* converter, const std::string& utf8) {
    const iconv_t cd = iconv_open(converter, "UTF-8");
    std::string out(utf8.size() * 2, '\0');
    char* in = const_cast<char*>(utf8.data());
    char* outPtr = out.data();
    std::size_t inLeft = utf8.size(), outLeft = out.size();
    if (cd == reinterpret_cast<iconv_t>(-1) || iconv(cd, &in, &inLeft, &outPtr, &outLeft) == std::size_t(-1)) {
        std::perror("iconv");
        std::exit(1);
    }
    iconv_close(cd);
    out.resize(out.size() - outLeft);
    return out;
}

// Best and median of several runs, in milliseconds.
void report(const char* what, std::size_t bytes, int runs, const std::function<std::size_t()>& work) {
    std::vector<double> times;
    std::size_t entries = 0;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        entries = work();
        const auto end = std::chrono::steady_clock::now();
        times.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%-44s %9zu bytes %7zu entries  best %8.2f ms  median %8.2f ms\n", what, bytes, entries, times.front(),
                times[times.size() / 2]);
}

std::size_t decodeAndParse(const std::string& bytes, CharsetEnum charset) {
    const auto text = tunelark::decodeLyrics(bytes, charset);
    if (!text) {
        std::fputs("decoding failed\n", stderr);
        std::exit(1);
    }
    LrcTimeline timeline;
    timeline.parse(*text);
    return timeline.size();
}

}  // namespace

int main() {
    const std::string utf8 = makeLyrics(10000);
    const std::string gb18030 = encodeAs("GB18030", utf8);
    report("decode + parse, 10,000 lines, GB18030", gb18030.size(), 15,
           [&] { return decodeAndParse(gb18030, CharsetEnum::GB18030); });
    report("decode + parse, 10,000 lines, UTF-8", utf8.size(), 15,
           [&] { return decodeAndParse(utf8, CharsetEnum::utf8); });

    const auto parseOnly = [](const std::string& text) {
        LrcTimeline timeline;
        timeline.parse(text);
        return timeline.size();
    };
    std::string big;
    while (big.size() < 10 * 1024 * 1024) big += utf8;
    report("parse only, 10 MB, UTF-8", big.size(), 5, [&] { return parseOnly(big); });
    // One line of 10 MB: no quadratic scan of a long line.
    const std::string oneLine = "[00:01.00]" + std::string(10 * 1024 * 1024, 'a');
    report("parse only, one 10 MB line", oneLine.size(), 5, [&] { return parseOnly(oneLine); });
    return 0;
}
