#pragma once
#include <any>
#include <optional>
#include <regex>
#include <string>

namespace tunelark {

// The input filter of the size fields: admits only the beginnings of non-negative decimal numbers,
// so that every keystroke that would leave anything else is refused.
class DoubleValueFormatter {
public:
    DoubleValueFormatter();

    // The empty text, or a whole text matching the pattern below. Nothing is ever proposed in place of
    // a refused text, and no error is described, so both out-slots (which may be null) are left alone.
    bool isPartialStringValid(const std::string& partialString, std::string* newString,
                              std::string* errorDescription) const;
    // A text object is shown as it is; any other object, and none, give no text.
    std::optional<std::string> stringForObjectValue(const std::any& object) const;
    // The object is the text itself; always succeeds.
    bool getObjectValue(std::any& object, const std::string& string, std::string* errorDescription) const;

private:
    // Empty when the pattern could not be built; every non-empty text is then refused.
    std::optional<std::regex> pattern_;
};

}  // namespace tunelark
