#include "preferences/DoubleValueFormatter.h"

namespace tunelark {
namespace {

// 0, "0.", "0.25", a point alone, ".5", "12", "12.", "12.75"; never "01", a sign, an exponent or a
// second point.
constexpr const char* kPartialNumber = R"(^(0|0\.|0\.[0-9]*|\.[0-9]*|[1-9][0-9]*\.[0-9]*|[1-9][0-9]*)$)";

}  // namespace

DoubleValueFormatter::DoubleValueFormatter() {
    try {
        pattern_.emplace(kPartialNumber, std::regex::ECMAScript);
    } catch (const std::regex_error&) {
        pattern_.reset();
    }
}

bool DoubleValueFormatter::isPartialStringValid(const std::string& partialString, std::string* /*newString*/,
                                                std::string* /*errorDescription*/) const {
    if (partialString.empty()) return true;
    if (!pattern_) return false;
    return std::regex_match(partialString, *pattern_);
}

std::optional<std::string> DoubleValueFormatter::stringForObjectValue(const std::any& object) const {
    if (const auto* text = std::any_cast<std::string>(&object)) return *text;
    return std::nullopt;
}

bool DoubleValueFormatter::getObjectValue(std::any& object, const std::string& string,
                                          std::string* /*errorDescription*/) const {
    object = string;
    return true;
}

}  // namespace tunelark
