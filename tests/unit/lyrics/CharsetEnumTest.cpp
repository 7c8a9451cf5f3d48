#include "engine/lyrics/CharsetEnum.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

using namespace std::string_literals;
using C = CharsetEnum;

TEST(CharsetEnumTest, NamesMatchExactlyAndTheChosenCaseKeepsTheStoredNameForMessages) {
    testing::internal::CaptureStdout();
    std::string lines;
    for (const std::string& name : allCharsetNames()) lines += name + "\n";  // logged as the list is built
    for (int i = 0; i < kCharsetCount; ++i) EXPECT_EQ(charsetForName(charsetName(C(i))), C(i)) << charsetName(C(i));
    for (const char* foreign : {"gbk", "UTF8", "utf-8", "utf8 ", "", "iso_8859_12"}) {
        EXPECT_FALSE(charsetForName(foreign)) << foreign;
    }
    struct Case { std::optional<std::string> stored; const char* language; C charset; const char* shown; };
    for (const Case& c : {Case{"gbk", "en-US", C::utf8, "gbk"}, Case{"gbk", "zh-Hans-CN", C::GB18030, "gbk"},
                          Case{{}, "zh-Hans", C::GB18030, "GB18030"}, Case{{}, "zh-Hant-TW", C::utf8, "utf8"},
                          Case{"big5", "zh-Hans-CN", C::big5, "big5"}}) {
        const ChosenCharset chosen = chooseCharset(c.stored, c.language);
        EXPECT_EQ(chosen.charset, c.charset) << c.shown;
        EXPECT_EQ(chosen.shownName, c.shown);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), lines + "utf8\nGB18030\nGB18030\nutf8\nbig5\n");
}

// Samples a neighbouring converter reads differently, byte order marks, a letter held back until the end.
TEST(CharsetEnumTest, EachCaseDecodesThroughItsOwnConverterAndAnyRejectedByteFailsTheText) {
    for (const auto& [charset, bytes, text] : std::vector<std::tuple<C, std::string, std::string>>{
             {C::utf16, "\xfe\xff\x00\x41"s, "A"}, {C::utf16, "\xff\xfe\x2d\x4e"s, "中"},
             {C::utf16BigEndian, "\xfe\xff\x00\x41"s, "\ufeffA"}, {C::GBK, "\x81\x40", "丂"},
             {C::GB18030, "\x81\x30\x8a\x31", "ä"}, {C::big5_HKSCS_1999, "\x9d\xee", "㗎"},
             {C::ISO_2022_JP, "\x1b\x24\x42\x46\x7c\x1b\x28\x42", "日"}, {C::KoreanJohab, "\xd0\x65", "한"},
             {C::iso_8859_1, "\xc3\xa9", "Ã©"}, {C::Cyrillic, "\xe6", "ж"}, {C::Vietnamese, "a\xcc", "à"},
             {C::utf8, "a\0\xf4\x8f\xbf\xbf"s, "a\0\xf4\x8f\xbf\xbf"s}}) {
        EXPECT_EQ(decodeLyrics(bytes, charset), text) << charsetName(charset);
    }
    for (int i = 0; i < kCharsetCount; ++i) {  // every converter exists and keeps ASCII
        const auto charset = static_cast<C>(i);
        const std::string_view converter = charsetConverter(charset);
        if (converter.starts_with("UTF-16") || converter.starts_with("UTF-32")) continue;
        EXPECT_EQ(decodeLyrics("[00:12.50]Hi\n", charset), "[00:12.50]Hi\n") << charsetName(charset);
    }
    EXPECT_EQ(decodeLyrics(std::string(100000, '\xa1'), C::iso_8859_11)->size(), 300000u) << "the output grows";
    // Code points beyond U+10FFFF were once taken: glibc's reader accepts them, but they are not text.
    for (const auto& [charset, bytes] : std::vector<std::pair<C, std::string>>{
             {C::utf8, "[00:01]\xf4\x90\x80\x80\n"}, {C::utf8, "\xf8\x88\x80\x80\x80"}, {C::GB18030, "ab\x81\x30"},
             {C::GB2312, "\x81\x40"}, {C::utf16, "\xff\xfe\x41"s}, {C::utf32BigEndian, "\x00\x11\x00\x00"s},
             {C::iso_8859_3, "\xa5"}, {C::ISO_2022_KR, "\x0e\x47"}}) {
        EXPECT_EQ(decodeLyrics(bytes, charset), std::nullopt) << charsetName(charset);
    }
}

}  // namespace
}  // namespace tunelark
