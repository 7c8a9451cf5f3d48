#include "engine/lyrics/CharsetEnum.h"

#include "platform/Console.h"
#include "platform/Utf8.h"

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace tunelark {
namespace {

struct CharsetInfo {
    std::string_view name;
    const char* converter;  // a glibc iconv name
};

// Declaration order of CharsetEnum. Every converter name was checked against `iconv -l` on Debian 12.
constexpr std::array<CharsetInfo, kCharsetCount> kCatalogue{{
    {"utf8", "UTF-8"},
    // Byte order from a leading mark, which glibc consumes; without one glibc reads host order.
    {"utf16", "UTF-16"},
    {"utf32", "UTF-32"},
    {"utf16BigEndian", "UTF-16BE"},
    {"utf32BigEndian", "UTF-32BE"},
    {"utf16LittleEndian", "UTF-16LE"},
    {"utf32LittleEndian", "UTF-32LE"},
    {"GB2312", "GB2312"},  // glibc's GB2312 is the EUC form, as lyric files use it
    {"GBK", "GBK"},
    {"GB18030", "GB18030"},
    {"EUC_CN", "EUC-CN"},
    {"ISO_2022_CN", "ISO-2022-CN"},
    {"big5", "BIG5"},
    // glibc has no Big5-E; CP950 is the nearest Big5 with vendor extensions.
    {"big5_E", "CP950"},
    // glibc has no 1999 edition of HKSCS; its BIG5-HKSCS (2008) is a superset of it.
    {"big5_HKSCS_1999", "BIG5-HKSCS"},
    {"EUC_JP", "EUC-JP"},
    {"ISO_2022_JP", "ISO-2022-JP"},
    {"EUC_KR", "EUC-KR"},
    {"ISO_2022_KR", "ISO-2022-KR"},
    {"EUC_TW", "EUC-TW"},
    {"iso_8859_1", "ISO-8859-1"},
    {"iso_8859_2", "ISO-8859-2"},
    {"iso_8859_3", "ISO-8859-3"},
    {"iso_8859_4", "ISO-8859-4"},
    {"iso_8859_5", "ISO-8859-5"},
    {"iso_8859_6", "ISO-8859-6"},
    {"iso_8859_7", "ISO-8859-7"},
    {"iso_8859_8", "ISO-8859-8"},
    {"iso_8859_9", "ISO-8859-9"},
    {"iso_8859_10", "ISO-8859-10"},
    {"iso_8859_11", "ISO-8859-11"},
    {"iso_8859_13", "ISO-8859-13"},
    {"iso_8859_14", "ISO-8859-14"},
    {"iso_8859_15", "ISO-8859-15"},
    {"iso_8859_16", "ISO-8859-16"},
    {"Arabic", "CP1256"},
    {"Greek", "CP1253"},
    {"Hebrew", "CP1255"},
    {"Latin2", "CP1250"},
    {"Latin5", "CP1254"},
    {"Cyrillic", "CP1251"},
    {"BalticRim", "CP1257"},
    {"Vietnamese", "CP1258"},
    {"KoreanJohab", "JOHAB"},
    {"KOI8_R", "KOI8-R"},
    {"KOI8_U", "KOI8-U"},
}};

const CharsetInfo& infoOf(CharsetEnum charset) {
    return kCatalogue.at(static_cast<std::size_t>(charset));
}

bool isSimplifiedChinese(std::string_view language) {
    return language.starts_with("zh-Hans");
}

// Owns one iconv conversion descriptor.
class IconvHandle {
public:
    IconvHandle(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~IconvHandle() {
        if (valid()) iconv_close(cd_);
    }
    IconvHandle(const IconvHandle&) = delete;
    IconvHandle& operator=(const IconvHandle&) = delete;

    bool valid() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return cd_; }

private:
    iconv_t cd_;
};

// Runs one iconv step (input, or the final flush when `in` is null), growing `out` while it is too small.
// `used` is the number of bytes of `out` already written.
bool convertStep(iconv_t cd, char** in, std::size_t* inLeft, std::string& out, std::size_t& used) {
    for (;;) {
        char* outPtr = out.data() + used;
        std::size_t outLeft = out.size() - used;
        const std::size_t result = iconv(cd, in, inLeft, &outPtr, &outLeft);
        used = static_cast<std::size_t>(outPtr - out.data());
        if (result != static_cast<std::size_t>(-1)) return true;
        if (errno != E2BIG) return false;  // EILSEQ (invalid) or EINVAL (incomplete at the end)
        out.resize(out.size() * 2);
    }
}

}  // namespace

std::string_view charsetName(CharsetEnum charset) {
    return infoOf(charset).name;
}

std::string_view charsetConverter(CharsetEnum charset) {
    return infoOf(charset).converter;
}

std::vector<std::string> allCharsetNames() {
    std::vector<std::string> names;
    names.reserve(kCatalogue.size());
    for (const CharsetInfo& info : kCatalogue) {
        consoleLine(info.name);
        names.emplace_back(info.name);
    }
    return names;
}

std::optional<CharsetEnum> charsetForName(std::string_view name) {
    for (std::size_t i = 0; i < kCatalogue.size(); ++i) {
        if (kCatalogue[i].name == name) return static_cast<CharsetEnum>(i);
    }
    return std::nullopt;
}

std::string defaultCharsetName(std::string_view language) {
    return isSimplifiedChinese(language) ? "GB18030" : "utf8";
}

ChosenCharset chooseCharset(const std::optional<std::string>& storedName, std::string_view language) {
    std::string shown = storedName ? *storedName : defaultCharsetName(language);
    // A name outside the catalogue still decodes, with the language's default; the shown name stays.
    const CharsetEnum charset = charsetForName(shown).value_or(
        isSimplifiedChinese(language) ? CharsetEnum::GB18030 : CharsetEnum::utf8);
    consoleLine(charsetName(charset));
    return {charset, std::move(shown)};
}

std::optional<std::string> decodeLyrics(std::string_view bytes, CharsetEnum charset) {
    const IconvHandle cd("UTF-8", infoOf(charset).converter);
    if (!cd.valid()) return std::nullopt;

    std::string out(bytes.size() + bytes.size() / 2 + 16, '\0');
    std::size_t used = 0;
    // iconv does not write through its input pointer; the cast only meets its C signature.
    char* in = const_cast<char*>(bytes.data());
    std::size_t inLeft = bytes.size();
    if (!convertStep(cd.get(), &in, &inLeft, out, used)) return std::nullopt;
    // Flush: some converters hold back a base letter that a combining mark could still join.
    if (!convertStep(cd.get(), nullptr, nullptr, out, used)) return std::nullopt;
    out.resize(used);
    // glibc's UTF-8 reader lets through code points beyond U+10FFFF (F4 90 and up, leads F5 to FD), which
    // are not text: strict decoding refuses them as any other invalid byte.
    if (!isWellFormedUtf8(out)) return std::nullopt;
    return out;
}

}  // namespace tunelark
