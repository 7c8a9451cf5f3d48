// Prints how long lyric decoding and parsing take: a 10,000-line file in GB18030, and the parse of 10 MB
// of lines and of one 10 MB line (no quadratic scan of a long line). Figures only; nothing passes or fails.
#include "engine/lyrics/CharsetEnum.h"
#include "engine/lyrics/LrcTimeline.h"

#include <iconv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace tunelark;

// Best and median of several runs of decoding (when a charset is given) and parsing, in milliseconds.
void report(const char* what, const std::string& bytes, int runs, std::optional<CharsetEnum> charset = {}) {
    std::vector<double> times;
    std::size_t entries = 0;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const auto text = charset ? decodeLyrics(bytes, *charset) : std::optional<std::string>(bytes);
        LrcTimeline timeline;
        timeline.parse(text.value_or(""));
        entries = timeline.size();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%-40s %9zu bytes %7zu entries  best %8.2f ms  median %8.2f ms\n", what, bytes.size(), entries,
                times.front(), times[times.size() / 2]);
}

}  // namespace

int main() {
    // Lines that mix a time tag, Chinese and Latin text, as lyric files of the target users do.
    const char* const words[] = {"月亮代表我的心", "Hello again", "你问我爱你有多深", "la la la", "轻轻的吻"};
    std::string utf8 = "[ti:Bench]\n";
    for (int i = 0; i < 10000; ++i) {
        char tag[32];
        std::snprintf(tag, sizeof tag, "[%02d:%05.2f]", i * 37 / 6000, (i * 37 % 6000) / 100.0);
        utf8 += std::string(tag) + words[i % 5] + ' ' + words[(i * 7 + 3) % 5] + "\r\n";
    }
    std::string gb18030(utf8.size() * 2, '\0');
    char *in = utf8.data(), *out = gb18030.data();
    std::size_t inLeft = utf8.size(), outLeft = gb18030.size();
    const iconv_t cd = iconv_open("GB18030", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1) || iconv(cd, &in, &inLeft, &out, &outLeft) == std::size_t(-1)) {
        std::perror("iconv");
        return 1;
    }
    iconv_close(cd);
    gb18030.resize(gb18030.size() - outLeft);
    report("decode + parse, 10,000 lines, GB18030", gb18030, 15, CharsetEnum::GB18030);
    std::string big;
    while (big.size() < 10 * 1024 * 1024) big += utf8;
    report("parse only, 10 MB, UTF-8", big, 5);
    report("parse only, one 10 MB line", "[00:01.00]" + std::string(10 * 1024 * 1024, 'a'), 5);
    return 0;
}
