#include "preferences/DoubleValueFormatter.h"

#include <gtest/gtest.h>

namespace tunelark {
namespace {

TEST(DoubleValueFormatterTest, AdmitsOnlyBeginningsOfNonNegativeDecimals) {
    DoubleValueFormatter formatter;
    for (const char* text : {"", "0", "0.", "0.25", ".", ".5", "12", "12.", "12.75", "100"})
        EXPECT_TRUE(formatter.isPartialStringValid(text, nullptr, nullptr)) << '"' << text << '"';
    for (const char* text : {"01", "00", "-3", "+3", "1e2", "1,5", " 12", "12 ", "1.2.3", "..", "abc", "0x1",
                             "12\n", "\n12", "１２"})
        EXPECT_FALSE(formatter.isPartialStringValid(text, nullptr, nullptr)) << '"' << text << '"';
}

TEST(DoubleValueFormatterTest, RefusalProposesNothingInstead) {
    DoubleValueFormatter formatter;
    std::string replacement = "untouched";
    std::string error = "untouched";
    EXPECT_FALSE(formatter.isPartialStringValid("07", &replacement, &error));
    EXPECT_EQ(replacement, "untouched");
    EXPECT_EQ(error, "untouched");
}

TEST(DoubleValueFormatterTest, ObjectValueIsTheTextItselfAndOnlyTextsAreShown) {
    DoubleValueFormatter formatter;
    std::any object;
    EXPECT_TRUE(formatter.getObjectValue(object, "not a number", nullptr));
    EXPECT_EQ(formatter.stringForObjectValue(object), "not a number");
    EXPECT_EQ(formatter.stringForObjectValue(std::any(12.5)), std::nullopt);
    EXPECT_EQ(formatter.stringForObjectValue(std::any()), std::nullopt);
}

}  // namespace
}  // namespace tunelark
