#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tunelark {

using PageValue = std::variant<bool, std::int64_t, std::string>;

// One call of a page function with plain values. A view may hand the page the values themselves, so
// that the script it runs is the same text from one call to the next and the page's script engine
// compiles it once instead of keeping a compiled copy of every call. script() is the same call as
// script text, for logs and for views that run text only.
struct PageCall {
    std::string function;
    std::vector<PageValue> arguments;

    // "setCurrent(\"00:07\");", "setIsPlaying(true);", "setSliderCurrentValue(42);".
    std::string script() const;
};

// The text to put between the double quotes of a script string. Double quotes and backslashes get a
// backslash; line breaks, other control characters, U+2028, U+2029 and "<" become escapes (so
// "</script>" never appears); each byte that is not part of valid UTF-8 becomes U+FFFD. Other text,
// non-ASCII included, is kept as it is. After the page has read the string it holds exactly the given
// text, whatever characters it contains: nothing in it can end the string early or add script.
std::string jsStringContent(std::string_view text);

}  // namespace tunelark
