#include "library/store/Settings.h"

#include "TempDir.h"
#include "fakes/FakeMainQueue.h"

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>

namespace tunelark {
namespace {

TEST(SettingsTest, StoredTextsAreReadLikeTheCLibraryReadsThem) {
    EXPECT_EQ(parseWholeNumber("0x1p-1"), 0.5);
    for (const char* text : {"", " 18", "18 ", "1,5", "18pt", "0x"}) EXPECT_FALSE(parseWholeNumber(text)) << text;
    for (const char* text : {"TRUE", "y", "\t\n1", "+9", "-0007", "tx"}) EXPECT_TRUE(parseStoredBool(text)) << text;
    for (const char* text : {"false", "", "-0", "+-1", "0.5", "on"}) EXPECT_FALSE(parseStoredBool(text)) << text;
    EXPECT_EQ(parseStoredColor(",,0.5,x,,1,0.9"), (Rgb{0.5, 0, 1}));
    EXPECT_EQ(parseStoredColor("0.5,,"), std::nullopt);
}

TEST(SettingsTest, WritingUpdatesEveryMatchingRecordOrInsertsOneAndAFailedFetchWritesNothing) {
    test::TempDir dir;
    test::FakeMainQueue queue;
    Store store(dir.file("s.sqlite"), queue);
    *store.insertSettingsEntity() = {"oneRowFontSize", "20"};
    *store.insertSettingsEntity() = {"oneRowFontSize", std::nullopt};  // only this key fills a record without value
    *store.insertSettingsEntity() = {"fontColor", std::nullopt};
    ASSERT_EQ(store.saveNow(), std::nullopt);
    writeStoredSettings(store, LyricsStyle{10, 20.5, {1, 0.5, 0}, true});
    EXPECT_EQ(queue.drain(), 1);
    std::vector<SettingsEntity> saved;
    const auto records = Store(dir.file("s.sqlite"), queue).fetchSettingsEntities().value();
    for (const auto& record : records) saved.push_back(*record);
    EXPECT_EQ(saved, (std::vector<SettingsEntity>{{"oneRowFontSize", "10.00"}, {"oneRowFontSize", "10.00"},
                                                  {"fontColor", std::nullopt}, {"twoRowsFontSize", "20.50"},
                                                  {"fontColor", "1.000000,0.500000,0.000000"},
                                                  {"keepBackgroundColor", "true"}}));
    test::writeAll(dir.file("bad.sqlite"), "not a store");
    Store broken(dir.file("bad.sqlite"), queue, [](const std::string&) {});
    testing::internal::CaptureStdout();
    LyricsStyle style{30, 40, {1, 0, 0}, true};
    loadStoredSettings(broken, style);
    writeStoredSettings(broken, style);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(style.oneRowFontSize, 30);
    EXPECT_FALSE(broken.hasChanges());
    EXPECT_EQ(test::readAll(dir.file("bad.sqlite")), "not a store");
}

// Every row of the settings table: the default reads back through the store as itself, a value the user
// picked survives a restart, and a record under another key or without a value is never read.
TEST(SettingsTest, EachSettingReadsBackWhatItWritesUnderItsOwnKeyOnly) {
    test::TempDir dir;
    test::FakeMainQueue queue;
    const LyricsStyle picked{33.5, 9.25, {0.25, 0.5, 0.75}, true};
    for (const LyricsStyle& written : {LyricsStyle{}, picked}) {
        std::filesystem::remove(dir.file("s.sqlite"));
        {
            Store store(dir.file("s.sqlite"), queue);
            writeStoredSettings(store, written);
            *store.insertSettingsEntity() = {"OneRowFontSize", "40"};
            ASSERT_EQ(store.saveNow(), std::nullopt);
        }
        Store reopened(dir.file("s.sqlite"), queue);
        LyricsStyle read{1, 2, {0, 0, 0}, false};
        loadStoredSettings(reopened, read);
        forEachLyricsSetting([&](const auto& setting) {
            EXPECT_EQ(read.*setting.field, written.*setting.field) << setting.key;
            EXPECT_EQ(setting.read(setting.write(setting.defaultValue())), setting.defaultValue()) << setting.key;
        });
    }
    EXPECT_EQ(readFontSize("abc"), kUnreadableFontSize) << "for either size, not the two-row default";
}

// Under a locale with a decimal comma (installed, or made here with only its numbers defined).
TEST(SettingsTest, NumbersKeepTheirPointUnderAnyLocale) {
    test::TempDir dir;
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8")) {
        test::writeAll(dir.file("c"), "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\n"
                                      "END LC_NUMERIC\n");
        [[maybe_unused]] int status = std::system(("localedef -c -i " + dir.file("c") + " -f ANSI_X3.4-1968 " +
                                                   dir.file("comma") + " >/dev/null 2>&1").c_str());
        setenv("LOCPATH", dir.path.c_str(), 1);
    }
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "comma")) GTEST_SKIP();
    char local[8];
    std::snprintf(local, sizeof local, "%.1f", 1.5);
    const auto read = parseWholeNumber("1.5");
    const std::string written = formatFontSize(2.675) + " " + formatColor({1, 1.0 / 3, 0});
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    EXPECT_STREQ(local, "1,5") << "the locale was in force";
    EXPECT_EQ(read, 1.5);
    EXPECT_EQ(written, "2.67 1.000000,0.333333,0.000000") << "as printf rounds in the C locale";
}

}  // namespace
}  // namespace tunelark
