#include "library/store/Settings.h"

#include "TempDir.h"
#include "fakes/FakeMainQueue.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace tunelark {
namespace {

TEST(ParseWholeNumberTest, ReadsWhatCStrtodReadsWhenItTakesTheWholeText) {
    const std::map<std::string, double> numbers = {
        {"18", 18},      {"18.00", 18},   {"-2.5", -2.5},  {"+3", 3},     {"1e2", 100},  {".5", 0.5},
        {"5.", 5},       {"0x10", 16},    {"0x1p-1", 0.5}, {"1E-1", 0.1}, {"007", 7},    {"-0", 0},
        {"inf", INFINITY}, {"-Infinity", -INFINITY}};
    for (const auto& [text, value] : numbers) EXPECT_EQ(parseWholeNumber(text), value) << text;
    EXPECT_TRUE(std::isnan(parseWholeNumber("nan").value()));
    EXPECT_TRUE(std::isnan(parseWholeNumber("NAN(123)").value()));
}

TEST(ParseWholeNumberTest, RefusesLeadingBlanksLeftoversAndNonNumbers) {
    for (const char* text : {"", " 18", "\t18", "\n18", "\v1", "\f1", "\r1", "18 ", "18\n", "abc", "1,5",
                             "1.5.2", ".", "-", "+", "e5", "18pt", "0x", "in", "1e"}) {
        EXPECT_EQ(parseWholeNumber(text), std::nullopt) << '"' << text << '"';
    }
    EXPECT_EQ(parseWholeNumber(std::string("1\0" "2", 3)), std::nullopt) << "a NUL inside ends the number early";
}

TEST(ParseStoredBoolTest, FirstMeaningfulCharacterDecides) {
    for (const char* text : {"true", "TRUE", "yes", "Y", "t", "1", "9", "  yes", "\t\n1", "+1", "-1", "0007",
                             "-0009", "+y", "tx", "19"}) {
        EXPECT_TRUE(parseStoredBool(text)) << '"' << text << '"';
    }
    for (const char* text : {"false", "no", "N", "0", "000", "", "   ", "+", "-", "-0", "x", " n", "+-1", "0.5",
                             ".1", "0x1"}) {
        EXPECT_FALSE(parseStoredBool(text)) << '"' << text << '"';
    }
}

TEST(ParseStoredColorTest, PiecesSplitAtCommasWithEmptyOnesDropped) {
    const std::map<std::string, Rgb> colors = {
        {"1.000000,0.500000,0.000000", {1, 0.5, 0}},
        {"1,0,,0", {1, 0, 0}},
        {"0.5,x,1", {0.5, 0, 1}},
        {"0.5,,0.2,0.1", {0.5, 0.2, 0.1}},
        {"x,0.2,0.3", {0, 0.2, 0.3}},
        {",,0.1,,0.2,0.3,", {0.1, 0.2, 0.3}},
        {"0.1,0.2,0.3,0.9", {0.1, 0.2, 0.3}},
        {" 0.5,1,1", {0, 1, 1}},
    };
    for (const auto& [text, color] : colors) EXPECT_EQ(parseStoredColor(text), color) << text;
    for (const char* text : {"", ",,,", "1,0", "0.5,,", "red"}) {
        EXPECT_EQ(parseStoredColor(text), std::nullopt) << '"' << text << '"';
    }
}

struct ApplyCase {
    const char* name;
    std::vector<SettingsEntity> records;
    LyricsStyle expected;
};

class ApplyStoredSettingsTest : public ::testing::TestWithParam<ApplyCase> {};

TEST_P(ApplyStoredSettingsTest, ReadsEveryMatchingRecordInOrder) {
    Records<SettingsEntity> records;
    for (const auto& record : GetParam().records) records.push_back(std::make_shared<SettingsEntity>(record));
    LyricsStyle style;
    applyStoredSettings(records, style);
    EXPECT_EQ(style.oneRowFontSize, GetParam().expected.oneRowFontSize);
    EXPECT_EQ(style.twoRowsFontSize, GetParam().expected.twoRowsFontSize);
    EXPECT_EQ(style.fontColor, GetParam().expected.fontColor);
    EXPECT_EQ(style.keepBackgroundColor, GetParam().expected.keepBackgroundColor);
}

constexpr Rgb kRed{1, 0, 0};

INSTANTIATE_TEST_SUITE_P(
    Cases, ApplyStoredSettingsTest,
    ::testing::Values(
        ApplyCase{"Nothing", {}, {18, 14, kSystemGrey, false}},
        ApplyCase{"AllFour",
                  {{"oneRowFontSize", "24.50"}, {"twoRowsFontSize", "12.00"}, {"fontColor", "1,0,0"},
                   {"keepBackgroundColor", "true"}},
                  {24.5, 12, kRed, true}},
        ApplyCase{"LastOfTwoWins", {{"oneRowFontSize", "20.00"}, {"oneRowFontSize", "22.00"}}, {22, 14, kSystemGrey, false}},
        ApplyCase{"SizesThatAreNotNumbersRead18",
                  {{"oneRowFontSize", "abc"}, {"twoRowsFontSize", "abc"}},
                  {18, 18, kSystemGrey, false}},
        ApplyCase{"RecordsWithoutValueIgnored",
                  {{"oneRowFontSize", "30"}, {"oneRowFontSize", std::nullopt}, {"twoRowsFontSize", std::nullopt},
                   {"fontColor", std::nullopt}, {"keepBackgroundColor", std::nullopt}},
                  {30, 14, kSystemGrey, false}},
        ApplyCase{"KeysMatchExactly",
                  {{"ONEROWFONTSIZE", "30"}, {"fontcolor", "1,0,0"}, {" keepBackgroundColor", "yes"},
                   {std::nullopt, "1"}},
                  {18, 14, kSystemGrey, false}},
        ApplyCase{"ColourWithTooFewNumbersKeepsTheOneInForce",
                  {{"fontColor", "1,0,0"}, {"fontColor", "0.5,0.5"}},
                  {18, 14, kRed, false}},
        ApplyCase{"UnrecognisedFlagIsFalse",
                  {{"keepBackgroundColor", "yes"}, {"keepBackgroundColor", "on"}},
                  {18, 14, kSystemGrey, false}}),
    [](const auto& info) { return std::string(info.param.name); });

// Settings written and read through a real store.
class SettingsStoreTest : public ::testing::Test {
protected:
    void store(const std::optional<std::string>& key, const std::optional<std::string>& value) {
        auto record = store_.insertSettingsEntity();
        record->key = key;
        record->value = value;
        ASSERT_EQ(store_.saveNow(), std::nullopt);
    }
    std::vector<SettingsEntity> onDisk() {
        Store fresh(dir.file("store.sqlite"), queue);
        std::vector<SettingsEntity> found;
        const auto records = fresh.fetchSettingsEntities().value();
        for (auto& record : records) found.push_back(*record);
        return found;
    }

    test::TempDir dir;
    test::FakeMainQueue queue;
    Store store_{dir.file("store.sqlite"), queue};
    const LyricsStyle confirmed{10, 20.5, {1, 0.5, 0}, true};
};

TEST_F(SettingsStoreTest, FirstWriteInsertsTheFourKeysInOrderAndSavesThroughTheQueue) {
    writeStoredSettings(store_, confirmed);
    EXPECT_EQ(queue.pending(), 1u);
    queue.drain();
    EXPECT_EQ(onDisk(), (std::vector<SettingsEntity>{{"oneRowFontSize", "10.00"},
                                                      {"twoRowsFontSize", "20.50"},
                                                      {"fontColor", "1.000000,0.500000,0.000000"},
                                                      {"keepBackgroundColor", "true"}}));
    LyricsStyle read;
    loadStoredSettings(store_, read);
    EXPECT_EQ(read.oneRowFontSize, 10);
    EXPECT_EQ(read.twoRowsFontSize, 20.5);
    EXPECT_EQ(read.fontColor, (Rgb{1, 0.5, 0}));
    EXPECT_TRUE(read.keepBackgroundColor);
}

TEST_F(SettingsStoreTest, SecondWriteUpdatesTheSameRecords) {
    writeStoredSettings(store_, confirmed);
    queue.drain();
    auto first = store_.fetchSettingsEntities().value();
    writeStoredSettings(store_, LyricsStyle{});
    queue.drain();
    EXPECT_EQ(store_.fetchSettingsEntities().value(), first);
    EXPECT_EQ(onDisk()[3], (SettingsEntity{"keepBackgroundColor", "false"}));
    EXPECT_EQ(onDisk().size(), 4u);
}

TEST_F(SettingsStoreTest, EveryDuplicateGetsTheNewValue) {
    store("oneRowFontSize", "20.00");
    store("oneRowFontSize", "22.00");
    LyricsStyle read;
    loadStoredSettings(store_, read);
    EXPECT_EQ(read.oneRowFontSize, 22);
    writeStoredSettings(store_, confirmed);
    queue.drain();
    auto records = onDisk();
    ASSERT_EQ(records.size(), 5u);
    EXPECT_EQ(records[0], (SettingsEntity{"oneRowFontSize", "10.00"}));
    EXPECT_EQ(records[1], (SettingsEntity{"oneRowFontSize", "10.00"}));
}

// Only the one-row size fills a record that has its key but no value; the others insert beside it.
TEST_F(SettingsStoreTest, RecordsWithoutValueCountOnlyForTheOneRowSize) {
    for (auto key : {kOneRowFontSizeKey, kTwoRowsFontSizeKey, kFontColorKey, kKeepBackgroundColorKey}) {
        store(std::string(key), std::nullopt);
    }
    store("ONEROWFONTSIZE", "30");
    writeStoredSettings(store_, confirmed);
    queue.drain();
    EXPECT_EQ(onDisk(), (std::vector<SettingsEntity>{{"oneRowFontSize", "10.00"},
                                                      {"twoRowsFontSize", std::nullopt},
                                                      {"fontColor", std::nullopt},
                                                      {"keepBackgroundColor", std::nullopt},
                                                      {"ONEROWFONTSIZE", "30"},
                                                      {"twoRowsFontSize", "20.50"},
                                                      {"fontColor", "1.000000,0.500000,0.000000"},
                                                      {"keepBackgroundColor", "true"}}));
}

TEST(SettingsWithoutStoreTest, FailedFetchWritesNothingAndLeavesValues) {
    test::TempDir dir;
    test::writeAll(dir.file("bad.sqlite"), "not a store");
    test::FakeMainQueue queue;
    Store broken(dir.file("bad.sqlite"), queue, [](const std::string&) {});
    testing::internal::CaptureStdout();
    LyricsStyle style{30, 40, kRed, true};
    loadStoredSettings(broken, style);
    writeStoredSettings(broken, style);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(style.oneRowFontSize, 30);
    EXPECT_EQ(style.fontColor, kRed);
    EXPECT_FALSE(broken.hasChanges()) << "nothing inserted";
    EXPECT_EQ(queue.pending(), 0u);
    EXPECT_EQ(test::readAll(dir.file("bad.sqlite")), "not a store");
}

TEST(FormatSettingsTest, WritesAsPrintfDoesInTheCLocale) {
    for (double size : {18.0, 10.005, 2.675, 99.999, 0.0, 100.0, 14.125, -1.5}) {
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.2f", size);
        EXPECT_EQ(formatFontSize(size), expected);
    }
    EXPECT_EQ(formatColor(kRed), "1.000000,0.000000,0.000000");
    EXPECT_EQ(formatColor({0.1234567, 1.0 / 3, 0.5}), "0.123457,0.333333,0.500000");
}

// A locale whose decimal mark is a comma: an installed one, or one made here with only its numbers
// defined; skipped where the machine can make neither.
class CommaLocaleTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
            if (std::setlocale(LC_NUMERIC, name)) return;
        }
        test::writeAll(dir.file("comma.src"),
                       "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
        // Warnings about the categories left out make localedef's status non-zero; -c writes anyway.
        const std::string command = "localedef -c -i '" + dir.file("comma.src") + "' -f ANSI_X3.4-1968 '" +
                                    dir.file("tl-comma") + "' >/dev/null 2>&1";
        [[maybe_unused]] int status = std::system(command.c_str());
        setenv("LOCPATH", dir.path().c_str(), 1);
        if (std::setlocale(LC_NUMERIC, "tl-comma")) return;
        GTEST_SKIP() << "no locale with a decimal comma on this machine";
    }
    void TearDown() override {
        std::setlocale(LC_NUMERIC, "C");
        unsetenv("LOCPATH");
    }
    test::TempDir dir;
};

TEST_F(CommaLocaleTest, NumbersKeepTheirPoint) {
    char local[16];
    std::snprintf(local, sizeof local, "%.1f", 1.5);
    ASSERT_STREQ(local, "1,5") << "the locale is in force";
    EXPECT_EQ(parseWholeNumber("1.5"), 1.5);
    EXPECT_EQ(parseWholeNumber("1,5"), std::nullopt);
    EXPECT_EQ(formatFontSize(18), "18.00");
    EXPECT_EQ(formatColor({1, 0.5, 0}), "1.000000,0.500000,0.000000");
    EXPECT_EQ(parseStoredColor("1.000000,0.500000,0.000000"), (Rgb{1, 0.5, 0}));
}

}  // namespace
}  // namespace tunelark
