#pragma once
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tunelark {

// The closed catalogue of the 46 lyric text encodings, in declaration order. The order is the order of
// the list the page shows and the order in which names are matched.
enum class CharsetEnum : int {
    utf8, utf16, utf32, utf16BigEndian, utf32BigEndian, utf16LittleEndian, utf32LittleEndian,
    GB2312, GBK, GB18030, EUC_CN, ISO_2022_CN, big5, big5_E, big5_HKSCS_1999, EUC_JP, ISO_2022_JP,
    EUC_KR, ISO_2022_KR, EUC_TW, iso_8859_1, iso_8859_2, iso_8859_3, iso_8859_4, iso_8859_5, iso_8859_6,
    iso_8859_7, iso_8859_8, iso_8859_9, iso_8859_10, iso_8859_11, iso_8859_13, iso_8859_14, iso_8859_15,
    iso_8859_16, Arabic, Greek, Hebrew, Latin2, Latin5, Cyrillic, BalticRim, Vietnamese, KoreanJohab,
    KOI8_R, KOI8_U,
};

inline constexpr int kCharsetCount = 46;

struct ChosenCharset {
    CharsetEnum charset;
    std::string shownName;  // what an error message names as the encoding
};

// The name the page shows and the store keeps.
std::string_view charsetName(CharsetEnum charset);
// The iconv converter behind a case.
std::string_view charsetConverter(CharsetEnum charset);
// All 46 names in order; writes each name to the console as the list is built.
std::vector<std::string> allCharsetNames();
// Exact, case-sensitive match.
std::optional<CharsetEnum> charsetForName(std::string_view name);
// "GB18030" for a language beginning with "zh-Hans", else "utf8".
std::string defaultCharsetName(std::string_view language);
// The encoding for a stored name (or none) and the user's first preferred language; writes the chosen
// case's name to the console.
ChosenCharset chooseCharset(const std::optional<std::string>& storedName, std::string_view language);
// Strict conversion of the whole byte sequence to UTF-8; nothing when any byte is rejected.
std::optional<std::string> decodeLyrics(std::string_view bytes, CharsetEnum charset);

}  // namespace tunelark
