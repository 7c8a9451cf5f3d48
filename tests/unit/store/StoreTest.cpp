#include "library/store/Store.h"

#include "TempDir.h"
#include "fakes/FakeMainQueue.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace tunelark {
namespace {

using test::readAll;

Bytes everyByteValue() {
    Bytes bytes;
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<std::uint8_t>(255 - i));
    return bytes;
}

template <typename T>
std::shared_ptr<T> findBy(const Records<T>& records, const std::string& filePath) {
    auto it = std::find_if(records.begin(), records.end(), [&](auto& r) { return r->filePath == filePath; });
    return it == records.end() ? nullptr : *it;
}

class StoreTest : public ::testing::Test {
protected:
    std::unique_ptr<Store> openStore() {
        return std::make_unique<Store>(path, queue, [this](const std::string& why) { fatal.push_back(why); });
    }

    test::TempDir dir;
    std::string path = dir.file("Data/Tunelark/Tunelark.sqlite");
    test::FakeMainQueue queue;
    std::vector<std::string> fatal;
};

TEST_F(StoreTest, EmptyStoreFetchesEmptyListsAndHasNoChanges) {
    auto store = openStore();
    EXPECT_TRUE(store->fetchMp3Entities().value().empty());
    EXPECT_TRUE(store->fetchLrcEntities().value().empty());
    EXPECT_TRUE(store->fetchSettingsEntities().value().empty());
    EXPECT_FALSE(store->hasChanges());
    EXPECT_TRUE(std::filesystem::exists(path)) << "the folder is created on first use";
    EXPECT_TRUE(fatal.empty());
}

TEST_F(StoreTest, EveryAttributeSurvivesReopening) {
    {
        auto store = openStore();
        auto top = store->insertMp3Entity();
        *top = Mp3Entity{everyByteValue(), true, "00:00", "歌 \xff\xfe.mp3", "file:///a/%E6%AD%8C.mp3",
                         "file:///a/%E6%AD%8C", 32767};
        auto bottom = store->insertMp3Entity();
        bottom->no = -32768;
        bottom->bookmark = Bytes{};  // present but empty, unlike absent
        bottom->fileName = "";
        auto lyric = store->insertLrcEntity();
        *lyric = LrcEntity{Bytes{0, 0, 0}, true, "gb_18030_2000", "a.lrc", "file:///a.lrc", "file:///a"};
        store->insertLrcEntity();
        auto setting = store->insertSettingsEntity();
        *setting = SettingsEntity{"fontColor", "1.000000,0.000000,0.000000"};
        store->insertSettingsEntity()->key = "keyOnly";
        ASSERT_EQ(store->saveNow(), std::nullopt);
    }
    auto store = openStore();
    auto audio = store->fetchMp3Entities().value();
    ASSERT_EQ(audio.size(), 2u);
    EXPECT_EQ(*audio[0], (Mp3Entity{everyByteValue(), true, "00:00", "歌 \xff\xfe.mp3", "file:///a/%E6%AD%8C.mp3",
                                    "file:///a/%E6%AD%8C", 32767}));
    EXPECT_EQ(*audio[1], (Mp3Entity{Bytes{}, false, std::nullopt, "", std::nullopt, std::nullopt, -32768}));
    auto lyrics = store->fetchLrcEntities().value();
    ASSERT_EQ(lyrics.size(), 2u);
    EXPECT_EQ(*lyrics[0], (LrcEntity{Bytes{0, 0, 0}, true, "gb_18030_2000", "a.lrc", "file:///a.lrc", "file:///a"}));
    EXPECT_EQ(*lyrics[1], LrcEntity{});
    auto settings = store->fetchSettingsEntities().value();
    ASSERT_EQ(settings.size(), 2u);
    EXPECT_EQ(*settings[0], (SettingsEntity{"fontColor", "1.000000,0.000000,0.000000"}));
    EXPECT_EQ(*settings[1], (SettingsEntity{"keyOnly", std::nullopt}));
    EXPECT_FALSE(store->hasChanges());
}

// The writer is a separate process that is killed right after its save, without closing the store.
TEST_F(StoreTest, SavedEntriesSurviveTheWriterBeingKilled) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        test::FakeMainQueue childQueue;
        Store store(path, childQueue, [](const std::string&) { _exit(3); });
        auto saved = store.insertMp3Entity();
        saved->filePath = "file:///saved.mp3";
        saved->bookmark = everyByteValue();
        saved->no = 1;
        store.saveChanges();
        childQueue.drain();
        if (store.hasChanges()) _exit(4);
        store.insertMp3Entity()->filePath = "file:///never-saved.mp3";
        raise(SIGKILL);
        _exit(5);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "child exit status " << status;

    auto store = openStore();
    auto audio = store->fetchMp3Entities().value();
    ASSERT_EQ(audio.size(), 1u);
    EXPECT_EQ(audio[0]->filePath, "file:///saved.mp3");
    EXPECT_EQ(audio[0]->bookmark, everyByteValue());
    EXPECT_EQ(audio[0]->no, 1);
}

TEST_F(StoreTest, FetchesHandOutOneObjectPerRecord) {
    auto store = openStore();
    auto inserted = store->insertLrcEntity();
    inserted->filePath = "file:///a.lrc";
    auto beforeSave = store->fetchLrcEntities().value();
    ASSERT_EQ(beforeSave.size(), 1u) << "an unsaved insert is fetched too";
    EXPECT_EQ(beforeSave[0], inserted);
    ASSERT_EQ(store->saveNow(), std::nullopt);

    auto first = store->fetchLrcEntities().value();
    auto second = store->fetchLrcEntities().value();
    ASSERT_EQ(first.size(), 1u);
    EXPECT_EQ(first[0], inserted) << "saving keeps the object";
    EXPECT_EQ(second[0], inserted);
    first[0]->charset = "big5";
    EXPECT_TRUE(store->hasChanges());
    EXPECT_EQ(store->fetchLrcEntities().value()[0]->charset, "big5") << "a fetch keeps unsaved changes";
}

TEST_F(StoreTest, ChangesAreFoundByComparingWithWhatWasSaved) {
    auto store = openStore();
    auto entry = store->insertMp3Entity();
    entry->bookmark = Bytes{1, 2};
    ASSERT_EQ(store->saveNow(), std::nullopt);
    EXPECT_FALSE(store->hasChanges());

    entry->bookmark->push_back(3);
    EXPECT_TRUE(store->hasChanges());
    entry->bookmark->pop_back();
    EXPECT_FALSE(store->hasChanges()) << "a field set back to its saved value is no change";
    entry->canNotUseNow = true;
    EXPECT_TRUE(store->hasChanges());
    ASSERT_EQ(store->saveNow(), std::nullopt);
    EXPECT_FALSE(store->hasChanges());

    auto reopened = openStore();
    EXPECT_TRUE(reopened->fetchMp3Entities().value().at(0)->canNotUseNow);
}

TEST_F(StoreTest, DeletedRecordStaysInHeldListsAndLeavesTheNextFetch) {
    auto store = openStore();
    for (const char* name : {"file:///a.mp3", "file:///b.mp3", "file:///c.mp3"}) {
        store->insertMp3Entity()->filePath = name;
    }
    ASSERT_EQ(store->saveNow(), std::nullopt);
    auto held = store->fetchMp3Entities().value();
    auto b = findBy(held, "file:///b.mp3");
    store->remove(b);
    store->remove(b);  // twice is harmless
    EXPECT_TRUE(store->hasChanges());
    EXPECT_EQ(held.size(), 3u);
    EXPECT_EQ(b->filePath, "file:///b.mp3") << "still readable";
    auto after = store->fetchMp3Entities().value();
    EXPECT_EQ(after.size(), 2u);
    EXPECT_EQ(findBy(after, "file:///b.mp3"), nullptr);

    b->filePath = "file:///changed-after-delete.mp3";
    ASSERT_EQ(store->saveNow(), std::nullopt);
    EXPECT_FALSE(store->hasChanges());
    auto reopened = openStore();
    auto onDisk = reopened->fetchMp3Entities().value();
    ASSERT_EQ(onDisk.size(), 2u);
    EXPECT_NE(findBy(onDisk, "file:///a.mp3"), nullptr);
    EXPECT_NE(findBy(onDisk, "file:///c.mp3"), nullptr);
}

TEST_F(StoreTest, RemovingAnUnsavedInsertLeavesNothingToSave) {
    auto store = openStore();
    auto setting = store->insertSettingsEntity();
    EXPECT_TRUE(store->hasChanges());
    store->remove(setting);
    store->remove(std::shared_ptr<SettingsEntity>());
    store->remove(std::make_shared<SettingsEntity>());  // never handed out by this store
    EXPECT_FALSE(store->hasChanges());
    EXPECT_TRUE(store->fetchSettingsEntities().value().empty());
}

TEST_F(StoreTest, SaveChangesQueuesOneSaveAndNothingWithoutChanges) {
    auto store = openStore();
    store->saveChanges();
    EXPECT_EQ(queue.pending(), 0u) << "no changes, no save";

    store->insertSettingsEntity()->key = "a";
    store->saveChanges();
    store->insertSettingsEntity()->key = "b";
    store->saveChanges();
    EXPECT_EQ(queue.pending(), 1u) << "saves asked for before the queued one runs share it";
    EXPECT_TRUE(store->hasChanges()) << "nothing is written before the queue runs";
    testing::internal::CaptureStdout();
    queue.drain();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_FALSE(store->hasChanges());
    EXPECT_EQ(openStore()->fetchSettingsEntities().value().size(), 2u);

    store->fetchSettingsEntities().value()[0]->value = "x";
    store->saveChanges();
    EXPECT_EQ(queue.pending(), 1u) << "a later change gets its own save";
    queue.drain();
    EXPECT_EQ(openStore()->fetchSettingsEntities().value()[0]->value, "x");
}

TEST_F(StoreTest, QueuedSaveOfADestroyedStoreDoesNothing) {
    auto store = openStore();
    store->insertSettingsEntity();
    store->saveChanges();
    store.reset();
    EXPECT_EQ(queue.drain(), 1);
    EXPECT_TRUE(openStore()->fetchSettingsEntities().value().empty());
}

// Another connection holds the write lock, so the save cannot write; the changes wait for the next save.
TEST_F(StoreTest, FailedSaveIsReportedAndKeepsChangesForTheNextSave) {
    auto store = openStore();
    store->insertMp3Entity()->filePath = "file:///first.mp3";
    ASSERT_EQ(store->saveNow(), std::nullopt);
    auto first = store->fetchMp3Entities().value().at(0);
    first->no = 7;
    auto second = store->insertMp3Entity();
    second->filePath = "file:///second.mp3";

    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    store->saveChanges();
    testing::internal::CaptureStdout();
    queue.drain();
    const std::string console = testing::internal::GetCapturedStdout();
    EXPECT_EQ(console, "Failure to save context: database is locked\n");
    EXPECT_TRUE(store->hasChanges());
    EXPECT_TRUE(store->saveNow().has_value());
    ASSERT_EQ(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);

    store->saveChanges();
    EXPECT_EQ(queue.drain(), 1);
    EXPECT_FALSE(store->hasChanges());
    auto onDisk = openStore()->fetchMp3Entities().value();
    ASSERT_EQ(onDisk.size(), 2u);
    EXPECT_EQ(findBy(onDisk, "file:///first.mp3")->no, 7);
    EXPECT_NE(findBy(onDisk, "file:///second.mp3"), nullptr);
    EXPECT_EQ(store->fetchMp3Entities().value().size(), 2u) << "the insert is not written twice";
}

// What a failed open must do: report, call the fatal handler once, and leave the file as it was.
struct OpenFailure {
    const char* name;
    std::function<void(const std::string& path)> prepare;
};

void makeDatabase(const std::string& path, const char* sql) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
}

// A store with many entries whose pages in the middle are overwritten.
void makeDamagedStore(const std::string& path) {
    {
        test::FakeMainQueue queue;
        Store store(path, queue);
        for (int i = 0; i < 500; ++i) store.insertMp3Entity()->filePath = std::string(100, 'a' + i % 26);
        ASSERT_EQ(store.saveNow(), std::nullopt);
    }
    makeDatabase(path, "PRAGMA journal_mode = DELETE");  // fold the WAL back into the file
    std::string bytes = readAll(path);
    ASSERT_GT(bytes.size(), 20000u);
    for (std::size_t i = 8192; i < 16384; ++i) bytes[i] = static_cast<char>(i * 7);
    test::writeAll(path, bytes);
}

class StoreOpenFailureTest : public StoreTest, public ::testing::WithParamInterface<OpenFailure> {};

TEST_P(StoreOpenFailureTest, ReportsAndLeavesTheFileUntouched) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    GetParam().prepare(path);
    const std::string before = readAll(path);
    testing::internal::CaptureStdout();
    auto store = openStore();
    EXPECT_EQ(store->fetchMp3Entities(), std::nullopt);
    EXPECT_EQ(store->fetchSettingsEntities(), std::nullopt);
    store->insertSettingsEntity();
    EXPECT_TRUE(store->saveNow().has_value());
    const std::string console = testing::internal::GetCapturedStdout();
    ASSERT_EQ(fatal.size(), 1u);
    EXPECT_EQ(console, "Unresolved error " + fatal[0] + "\n") << "one line";
    EXPECT_NE(fatal[0].find(path), std::string::npos) << "the description names the file";
    store.reset();
    EXPECT_EQ(readAll(path), before);
}

INSTANTIATE_TEST_SUITE_P(
    Files, StoreOpenFailureTest,
    ::testing::Values(
        OpenFailure{"NotADatabase",
                    [](const std::string& p) { test::writeAll(p, std::string(5000, 'x') + "not a store"); }},
        OpenFailure{"ShortText", [](const std::string& p) { test::writeAll(p, "hello"); }},
        OpenFailure{"AnotherProgramsDatabase",
                    [](const std::string& p) { makeDatabase(p, "CREATE TABLE other (x); INSERT INTO other VALUES (1)"); }},
        OpenFailure{"NewerSchema", [](const std::string& p) { makeDatabase(p, "PRAGMA user_version = 99"); }},
        OpenFailure{"Damaged", [](const std::string& p) { makeDamagedStore(p); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(StoreTest, FolderThatCannotBeCreatedIsFatal) {
    test::writeAll(dir.file("Data"), "a file where the folder should be");
    testing::internal::CaptureStdout();
    EXPECT_EQ(openStore()->fetchLrcEntities(), std::nullopt);
    const std::string console = testing::internal::GetCapturedStdout();
    ASSERT_EQ(fatal.size(), 1u);
    EXPECT_EQ(console, "Unresolved error " + fatal[0] + "\n");
    EXPECT_EQ(readAll(dir.file("Data")), "a file where the folder should be");
}

TEST_F(StoreTest, OpenFailureEndsTheProcessByDefault) {
    test::writeAll(dir.file("bad.sqlite"), "not a store at all");
    EXPECT_EXIT(
        {
            Store store(dir.file("bad.sqlite"), queue);
            store.fetchMp3Entities();
            std::exit(0);
        },
        ::testing::ExitedWithCode(EXIT_FAILURE), "");
}

}  // namespace
}  // namespace tunelark
