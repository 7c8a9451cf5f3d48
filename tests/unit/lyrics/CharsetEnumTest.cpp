#include "engine/lyrics/CharsetEnum.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using namespace std::string_literals;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST(CharsetEnumTest, NamesFollowTheCatalogueOrder) {
    testing::internal::CaptureStdout();
    const std::vector<std::string> names = allCharsetNames();
    const std::string console = testing::internal::GetCapturedStdout();

    ASSERT_EQ(names.size(), static_cast<std::size_t>(kCharsetCount));
    EXPECT_EQ(names[0], "utf8");
    EXPECT_EQ(names[1], "utf16");
    EXPECT_EQ(names[2], "utf32");
    EXPECT_EQ(names[9], "GB18030");
    EXPECT_EQ(names[12], "big5");
    EXPECT_EQ(names[34], "iso_8859_16");  // there is no ISO 8859-12
    EXPECT_EQ(names[35], "Arabic");
    EXPECT_EQ(names[44], "KOI8_R");
    EXPECT_EQ(names[45], "KOI8_U");
    EXPECT_EQ(linesOf(console), names) << "each name is written to the console as the list is built";
}

TEST(CharsetEnumTest, EveryNameFindsItsOwnCase) {
    for (int i = 0; i < kCharsetCount; ++i) {
        const auto charset = static_cast<CharsetEnum>(i);
        EXPECT_EQ(charsetForName(charsetName(charset)), charset) << charsetName(charset);
    }
}

TEST(CharsetEnumTest, NameLookupIsExactAndCaseSensitive) {
    EXPECT_EQ(charsetForName("GB18030"), CharsetEnum::GB18030);
    EXPECT_EQ(charsetForName("big5_HKSCS_1999"), CharsetEnum::big5_HKSCS_1999);
    for (const char* foreign : {"gbk", "UTF8", "utf-8", "gb18030", "Utf8", "utf8 ", " utf8", "", "iso_8859_12"}) {
        EXPECT_EQ(charsetForName(foreign), std::nullopt) << '"' << foreign << '"';
    }
}

TEST(CharsetEnumTest, DefaultNameIsGb18030OnlyForSimplifiedChinese) {
    EXPECT_EQ(defaultCharsetName("zh-Hans"), "GB18030");
    EXPECT_EQ(defaultCharsetName("zh-Hans-CN"), "GB18030");
    EXPECT_EQ(defaultCharsetName("zh-Hant-TW"), "utf8");
    EXPECT_EQ(defaultCharsetName("zh"), "utf8");
    EXPECT_EQ(defaultCharsetName("en-US"), "utf8");
    EXPECT_EQ(defaultCharsetName(""), "utf8");
}

struct ChooseCase {
    const char* name;
    std::optional<std::string> stored;
    const char* language;
    CharsetEnum expected;
    const char* shown;
};

TEST(CharsetEnumTest, ChooseEncodingKeepsTheStoredNameForMessages) {
    const std::vector<ChooseCase> cases = {
        {"unknown stored name decodes as utf8", "gbk", "en-US", CharsetEnum::utf8, "gbk"},
        {"unknown stored name follows a Simplified language", "gbk", "zh-Hans-CN", CharsetEnum::GB18030, "gbk"},
        {"no stored name, Simplified language", std::nullopt, "zh-Hans-CN", CharsetEnum::GB18030, "GB18030"},
        {"no stored name, other language", std::nullopt, "en-US", CharsetEnum::utf8, "utf8"},
        {"no stored name, Traditional language", std::nullopt, "zh-Hant-TW", CharsetEnum::utf8, "utf8"},
        {"stored name wins over the language", "big5", "zh-Hans", CharsetEnum::big5, "big5"},
        {"empty stored name is a name outside the catalogue", "", "en", CharsetEnum::utf8, ""},
        {"stored name with the wrong case", "UTF16", "en", CharsetEnum::utf8, "UTF16"},
    };
    for (const ChooseCase& c : cases) {
        testing::internal::CaptureStdout();
        const ChosenCharset chosen = chooseCharset(c.stored, c.language);
        const std::string console = testing::internal::GetCapturedStdout();
        EXPECT_EQ(chosen.charset, c.expected) << c.name;
        EXPECT_EQ(chosen.shownName, c.shown) << c.name;
        EXPECT_EQ(console, std::string(charsetName(c.expected)) + "\n") << c.name;
    }
}

struct DecodeCase {
    CharsetEnum charset;
    std::string valid;                  // bytes in the encoding
    std::string text;                   // what they mean, in UTF-8
    std::optional<std::string> invalid;  // bytes the encoding rejects, where there are any
};

// One sample per case, chosen so that a neighbouring converter would read it differently.
const std::vector<DecodeCase>& decodeCases() {
    using C = CharsetEnum;
    static const std::vector<DecodeCase> cases = {
        {C::utf8, "\xe4\xb8\xad\xc3\xa9", "中é", "\xff"},
        {C::utf16, "\xff\xfe\x2d\x4e\xe9\x00"s, "中é", "\xff\xfe\x00\xdc"s},
        {C::utf32, "\xff\xfe\x00\x00\x2d\x4e\x00\x00"s, "中", "\xff\xfe\x00\x00\x00\x00\x11\x00"s},
        {C::utf16BigEndian, "\x4e\x2d\x00\xe9"s, "中é", "\xdc\x00"s},
        {C::utf32BigEndian, "\x00\x00\x4e\x2d"s, "中", "\x00\x11\x00\x00"s},
        {C::utf16LittleEndian, "\x2d\x4e\xe9\x00"s, "中é", "\x00\xdc"s},
        {C::utf32LittleEndian, "\x2d\x4e\x00\x00"s, "中", "\x00\x00\x11\x00"s},
        {C::GB2312, "\xd6\xd0\xce\xc4", "中文", "\x81\x40"},
        {C::GBK, "\x81\x40\xd6\xd0", "丂中", "\x81\x30\x8a\x31"},
        {C::GB18030, "\xd6\xd0\x81\x30\x8a\x31", "中ä", "\xff"},
        {C::EUC_CN, "\xd6\xd0\xce\xc4", "中文", "\xa1\x20"},
        {C::ISO_2022_CN, "\x1b\x24\x29\x41\x0e\x56\x50\x4e\x44\x0f", "中文", "\x80"},
        {C::big5, "\xa4\xa4\xa4\xe5", "中文", "\xa4\x20"},
        {C::big5_E, "\xa4\xa4\xa3\xe1", "中€", "\xa4\x20"},
        {C::big5_HKSCS_1999, "\xa4\xa4\x9d\xee", "中㗎", "\xa4\x20"},
        {C::EUC_JP, "\xc6\xfc\xcb\xdc", "日本", "\xa1\x20"},
        {C::ISO_2022_JP, "\x1b\x24\x42\x46\x7c\x4b\x5c\x1b\x28\x42", "日本", "\x80"},
        {C::EUC_KR, "\xc7\xd1\xb1\xb9", "한국", "\xa1\x20"},
        {C::ISO_2022_KR, "\x1b\x24\x29\x43\x0e\x47\x51\x31\x39\x0f", "한국", "\x0e\x47"},
        {C::EUC_TW, "\xc4\xe3\xc5\xc6", "中文", "\xa1\x20"},
        {C::iso_8859_1, "\xe9", "é", std::nullopt},
        {C::iso_8859_2, "\xb1", "ą", std::nullopt},
        {C::iso_8859_3, "\xa1", "Ħ", "\xa5"},
        {C::iso_8859_4, "\xb3", "ŗ", std::nullopt},
        {C::iso_8859_5, "\xd6", "ж", std::nullopt},
        {C::iso_8859_6, "\xc8", "ب", "\xa1"},
        {C::iso_8859_7, "\xe1", "α", "\xae"},
        {C::iso_8859_8, "\xe0", "א", "\xa1"},
        {C::iso_8859_9, "\xfd", "ı", std::nullopt},
        {C::iso_8859_10, "\xbf", "ŋ", std::nullopt},
        {C::iso_8859_11, "\xa1", "ก", "\xdb"},
        {C::iso_8859_13, "\xf8", "ų", std::nullopt},
        {C::iso_8859_14, "\xf0", "ŵ", std::nullopt},
        {C::iso_8859_15, "\xa4", "€", std::nullopt},
        {C::iso_8859_16, "\xba", "ș", std::nullopt},
        {C::Arabic, "\x81\xc8", "پب", std::nullopt},
        {C::Greek, "\xe1", "α", "\xaa"},
        {C::Hebrew, "\xe0", "א", "\xca"},
        {C::Latin2, "\xb9", "ą", "\x81"},
        {C::Latin5, "\xfd", "ı", "\x81"},
        {C::Cyrillic, "\xe6", "ж", "\x98"},
        {C::BalticRim, "\xf8", "ų", "\xa1"},
        {C::Vietnamese, "\xfd", "ư", "\x81"},
        {C::KoreanJohab, "\xd0\x65\x8a\x82", "한국", "\x84\x20"},
        {C::KOI8_R, "\xd6", "ж", std::nullopt},
        {C::KOI8_U, "\xa4", "є", std::nullopt},
    };
    return cases;
}

TEST(CharsetEnumTest, EveryCaseDecodesThroughARealConverter) {
    const std::vector<DecodeCase>& cases = decodeCases();
    ASSERT_EQ(cases.size(), static_cast<std::size_t>(kCharsetCount));
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const DecodeCase& c = cases[i];
        const std::string_view name = charsetName(c.charset);
        ASSERT_EQ(static_cast<std::size_t>(c.charset), i) << "table out of catalogue order at " << name;
        EXPECT_EQ(decodeLyrics(c.valid, c.charset), c.text) << name;
        if (c.invalid) {
            EXPECT_EQ(decodeLyrics(*c.invalid, c.charset), std::nullopt) << name;
        }
    }
}

TEST(CharsetEnumTest, AsciiLyricLinesSurviveEveryAsciiCompatibleCase) {
    const std::string line = "[00:12.50]Hello, world\n";
    for (int i = 0; i < kCharsetCount; ++i) {
        const auto charset = static_cast<CharsetEnum>(i);
        const std::string_view converter = charsetConverter(charset);
        if (converter.starts_with("UTF-16") || converter.starts_with("UTF-32")) continue;
        EXPECT_EQ(decodeLyrics(line, charset), line) << charsetName(charset);
    }
}

TEST(CharsetEnumTest, TheSameBytesMeanDifferentTextsInDifferentCases) {
    EXPECT_EQ(decodeLyrics("\xc3\xa9", CharsetEnum::utf8), "é");
    EXPECT_EQ(decodeLyrics("\xc3\xa9", CharsetEnum::iso_8859_1), "Ã©");
    EXPECT_EQ(decodeLyrics("\xff", CharsetEnum::iso_8859_1), "ÿ");
    EXPECT_EQ(decodeLyrics("\xff", CharsetEnum::utf8), std::nullopt);
}

TEST(CharsetEnumTest, InputCutShortInsideACharacterFails) {
    EXPECT_EQ(decodeLyrics("ab\xe4\xb8", CharsetEnum::utf8), std::nullopt);
    EXPECT_EQ(decodeLyrics("ab\xd6", CharsetEnum::GB2312), std::nullopt);
    EXPECT_EQ(decodeLyrics("ab\x81\x30", CharsetEnum::GB18030), std::nullopt);
    EXPECT_EQ(decodeLyrics("\xff\xfe\x41", CharsetEnum::utf16), std::nullopt);
    EXPECT_EQ(decodeLyrics("\x00\x00\x41"s, CharsetEnum::utf32BigEndian), std::nullopt);
}

TEST(CharsetEnumTest, InvalidBytesAnywhereFailTheWholeText) {
    const std::string good(5000, 'a');
    EXPECT_EQ(decodeLyrics(good + "\xff" + good, CharsetEnum::utf8), std::nullopt);
    EXPECT_EQ(decodeLyrics(good + "\xed\xa0\x80", CharsetEnum::utf8), std::nullopt) << "encoded surrogate";
    EXPECT_EQ(decodeLyrics("\xc0\xaf", CharsetEnum::utf8), std::nullopt) << "overlong form";
}

// glibc's own UTF-8 reader takes these; they are not text, and the page and the lyrics window get text.
TEST(CharsetEnumTest, Utf8BeyondTheLastCodePointFails) {
    for (const char* beyond : {"\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xf7\xbf\xbf\xbf", "\xf8\x88\x80\x80\x80",
                               "\xfc\x84\x80\x80\x80\x80"}) {
        EXPECT_EQ(decodeLyrics(std::string("[00:01]") + beyond + "\n", CharsetEnum::utf8), std::nullopt) << beyond;
    }
    EXPECT_EQ(decodeLyrics("\xf4\x8f\xbf\xbf", CharsetEnum::utf8), "\xf4\x8f\xbf\xbf") << "U+10FFFF is the last one";
    EXPECT_EQ(decodeLyrics("\xef\xbf\xbe", CharsetEnum::utf8), "\xef\xbf\xbe") << "a noncharacter is still text";
}

TEST(CharsetEnumTest, ByteOrderMarkDecidesUnmarkedUtf16AndStaysInFixedOrderCases) {
    EXPECT_EQ(decodeLyrics("\xff\xfe\x41\x00"s, CharsetEnum::utf16), "A");
    EXPECT_EQ(decodeLyrics("\xfe\xff\x00\x41"s, CharsetEnum::utf16), "A");
    EXPECT_EQ(decodeLyrics("\x00\x00\xfe\xff\x00\x00\x00\x41"s, CharsetEnum::utf32), "A");
    // A fixed byte order keeps the mark as a character; the LRC parser drops it before a tag.
    EXPECT_EQ(decodeLyrics("\xfe\xff\x00\x41"s, CharsetEnum::utf16BigEndian), "\xef\xbb\xbf" "A");
    EXPECT_EQ(decodeLyrics("\xef\xbb\xbf[", CharsetEnum::utf8), "\xef\xbb\xbf[");
}

TEST(CharsetEnumTest, ConvertersThatHoldBackTheLastLetterAreFlushed) {
    EXPECT_EQ(decodeLyrics("ab", CharsetEnum::Vietnamese), "ab");
    EXPECT_EQ(decodeLyrics("a\xcc", CharsetEnum::Vietnamese), "à");  // base letter and combining grave
    EXPECT_EQ(decodeLyrics("\xe0", CharsetEnum::Hebrew), "א");
}

TEST(CharsetEnumTest, LongTextsGrowTheOutputAndKeepEveryByte) {
    std::string thai;
    std::string expected;
    for (int i = 0; i < 100000; ++i) {
        thai += "\xa1";
        expected += "ก";  // one byte in, three bytes out
    }
    EXPECT_EQ(decodeLyrics(thai, CharsetEnum::iso_8859_11), expected);
    EXPECT_EQ(decodeLyrics("a\0b"s, CharsetEnum::utf8), "a\0b"s);
    EXPECT_EQ(decodeLyrics("", CharsetEnum::ISO_2022_JP), "");
}

}  // namespace
}  // namespace tunelark
