#include "library/store/Store.h"

#include "TempDir.h"
#include "fakes/FakeMainQueue.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <numeric>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tunelark {
namespace {

using test::readAll;

void exec(const std::string& path, const char* sql) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
}

class StoreTest : public ::testing::Test {
protected:
    std::unique_ptr<Store> open() {
        return std::make_unique<Store>(path, queue, [this](const std::string& why) { fatal.push_back(why); });
    }
    // Saves `count` copies of `full`, the write-ahead log folded back into the file.
    void save(int count) {
        auto store = open();
        for (int i = 0; i < count; ++i) *store->insertMp3Entity() = full;
        ASSERT_EQ(store->saveNow(), std::nullopt);
        store.reset();
        exec(path, "PRAGMA journal_mode = DELETE");
    }

    test::TempDir dir;
    std::string path = dir.file("Data/Tunelark.sqlite");  // the folder is made on first use
    test::FakeMainQueue queue;
    std::vector<std::string> fatal;
    const Mp3Entity full{[] { Bytes all(256); std::iota(all.begin(), all.end(), 0); return all; }(), true, "00:00",
                         "歌 \xff.mp3", "file:///%E6%AD%8C.mp3", "file:///%E6%AD%8C", 32767};
};

TEST_F(StoreTest, EveryAttributeSurvivesReopeningAndChangesAreFoundByComparison) {
    const Mp3Entity bare{Bytes{}, false, std::nullopt, "", std::nullopt, std::nullopt, -32768};
    const LrcEntity lyric{Bytes{0, 0}, true, "GB18030", "a.lrc", "file:///a.lrc", "file:///a"};
    save(1);
    auto store = open();
    *store->insertMp3Entity() = bare;
    *store->insertLrcEntity() = lyric;
    *store->insertSettingsEntity() = SettingsEntity{"keyOnly", std::nullopt};
    store->remove(store->insertLrcEntity());
    ASSERT_EQ(store->saveNow(), std::nullopt);
    store = open();
    const auto audio = store->fetchMp3Entities().value();
    ASSERT_EQ(audio.size(), 2u);
    const bool fullFirst = audio[0]->no == full.no;  // fetches have no defined order
    EXPECT_EQ(*audio[0], fullFirst ? full : bare);
    EXPECT_EQ(*audio[1], fullFirst ? bare : full);
    ASSERT_EQ(store->fetchLrcEntities().value().size(), 1u);
    EXPECT_EQ(*store->fetchLrcEntities().value()[0], lyric);
    EXPECT_EQ(*store->fetchSettingsEntities().value().at(0), (SettingsEntity{"keyOnly", std::nullopt}));
    EXPECT_EQ(store->fetchMp3Entities().value(), audio) << "one object per record";
    audio[0]->bookmark->push_back(1);
    EXPECT_TRUE(store->hasChanges());
    audio[0]->bookmark->pop_back();
    EXPECT_FALSE(store->hasChanges()) << "a field set back to its saved value is no change";
}

// A store the first schema wrote, made here with plain SQL as a user's file holds it: every column reads into
// its own field, whatever the order in which the program names its columns.
TEST_F(StoreTest, AFileOfTheFirstSchemaReadsEachColumnIntoItsField) {
    std::filesystem::create_directories(dir.file("Data"));
    exec(path, R"sql(
        CREATE TABLE mp3_entity (id INTEGER PRIMARY KEY, bookmark BLOB, can_not_use_now INTEGER NOT NULL,
            duration TEXT, file_name TEXT, file_path TEXT, main_path_file_name TEXT, no INTEGER NOT NULL) STRICT;
        CREATE TABLE lrc_entity (id INTEGER PRIMARY KEY, bookmark BLOB, can_not_use_now INTEGER NOT NULL,
            charset TEXT, file_name TEXT, file_path TEXT, main_path_file_name TEXT) STRICT;
        CREATE TABLE settings_entity (id INTEGER PRIMARY KEY, key TEXT, value TEXT) STRICT;
        INSERT INTO mp3_entity (no, main_path_file_name, file_path, file_name, duration, can_not_use_now, bookmark)
            VALUES (3, 'main', 'path', 'name', '01:02', 1, x'0102');
        INSERT INTO lrc_entity (main_path_file_name, file_path, file_name, charset, can_not_use_now, bookmark)
            VALUES ('lmain', 'lpath', 'lname', 'big5', 0, x'03');
        INSERT INTO settings_entity (value, key) VALUES ('v', 'k');
        PRAGMA user_version = 1;)sql");
    auto store = open();
    const Mp3Entity audio{Bytes{1, 2}, true, "01:02", "name", "path", "main", 3};
    EXPECT_EQ(*store->fetchMp3Entities().value().at(0), audio);
    EXPECT_EQ(*store->fetchLrcEntities().value().at(0), (LrcEntity{Bytes{3}, false, "big5", "lname", "lpath", "lmain"}));
    EXPECT_EQ(*store->fetchSettingsEntities().value().at(0), (SettingsEntity{"k", "v"}));
    EXPECT_TRUE(fatal.empty());
}

// Another connection holds the write lock.
TEST_F(StoreTest, AFailedSaveIsReportedAndKeepsTheChangesForTheNextSave) {
    auto store = open();
    auto first = store->insertMp3Entity();
    ASSERT_EQ(store->saveNow(), std::nullopt);
    store->saveChanges();
    EXPECT_EQ(queue.pending(), 0u) << "no changes, no save";
    first->no = 7;
    store->saveChanges();
    store->insertMp3Entity()->no = 8;
    store->saveChanges();
    EXPECT_EQ(queue.pending(), 1u) << "saves asked for together share one";
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    testing::internal::CaptureStdout();
    queue.drain();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failure to save context: database is locked\n");
    EXPECT_TRUE(store->hasChanges());
    sqlite3_close(other);
    store->saveChanges();
    queue.drain();
    const auto saved = open()->fetchMp3Entities().value();
    ASSERT_EQ(saved.size(), 2u) << "the insert is written once";
    EXPECT_EQ(saved[0]->no + saved[1]->no, 15);
    store->insertMp3Entity();
    store->saveChanges();
    store.reset();
    EXPECT_EQ(queue.drain(), 1) << "a queued save outlives its store harmlessly";
    EXPECT_EQ(open()->fetchMp3Entities().value().size(), 2u);
}

// Foreign, newer, cut short (in the header, first page, at a page boundary, in the last pages), or garbled.
TEST_F(StoreTest, AStoreThatCannotBeOpenedIsReportedAndLeftByteForByte) {
    save(300);
    const std::string whole = readAll(path);
    std::string garbled = whole;
    for (std::size_t i = whole.size() / 2; i < whole.size() / 2 + 3000; ++i) garbled[i] = static_cast<char>(i * 31);
    std::vector<std::string> files = {"hello", std::string(5000, 'x'), garbled};
    for (std::size_t size : {50ul, 1000ul, whole.size() / 8192 * 4096, whole.size() - 4196}) {
        files.push_back(whole.substr(0, size));
    }
    for (const char* sql : {"CREATE TABLE other (x)", "PRAGMA user_version = 99"}) {
        std::filesystem::remove(path);
        exec(path, sql);
        files.push_back(readAll(path));
    }
    for (const std::string& before : files) {
        test::writeAll(path, before);
        fatal.clear();
        testing::internal::CaptureStdout();
        auto store = open();
        EXPECT_EQ(store->fetchMp3Entities(), std::nullopt);
        store->insertMp3Entity();
        EXPECT_TRUE(store->saveNow().has_value());
        store.reset();
        const std::string console = testing::internal::GetCapturedStdout();
        ASSERT_EQ(fatal.size(), 1u) << before.size();
        EXPECT_EQ(console, "Unresolved error " + fatal[0] + "\n");
        EXPECT_NE(fatal[0].find(path), std::string::npos) << "the description names the file";
        EXPECT_EQ(readAll(path), before) << before.size();
        EXPECT_FALSE(std::filesystem::exists(path + "-wal"));
    }
    EXPECT_EXIT({ Store(path, queue).fetchMp3Entities(); std::exit(0); }, ::testing::ExitedWithCode(EXIT_FAILURE), "")
        << "without a handler the failure ends the process";
}

// An unprivileged reader (permissions do not stop root) may read but not write; refusing to open is fine.
TEST_F(StoreTest, AStoreThatCannotBeWrittenLosesNothing) {
    save(1);
    const std::string before = readAll(path);
    chmod(path.c_str(), 0444);
    chmod(dir.file("Data").c_str(), 0555);
    if (fork() == 0) {
        if (getuid() == 0 && setuid(65534) != 0) _exit(10);
        bool refused = false;
        Store reader(path, queue, [&](const std::string&) { refused = true; });
        auto entries = reader.fetchMp3Entities();
        if (refused) _exit(entries ? 11 : 1);
        if (!entries || entries->size() != 1) _exit(12);
        (*entries)[0]->no = 999;
        _exit(reader.saveNow().has_value() && reader.hasChanges() ? 0 : 13);
    }
    int status = 0;
    wait(&status);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << status;
    chmod(dir.file("Data").c_str(), 0755);
    chmod(path.c_str(), 0644);
    EXPECT_EQ(readAll(path), before);
    EXPECT_EQ(*open()->fetchMp3Entities().value().at(0), full);
}

}  // namespace
}  // namespace tunelark
