// Store files damaged or locked away by something else: the store reports, keeps every byte of the
// file, and a later run with the file repaired still finds what was saved.
#include "library/store/Store.h"

#include "TempDir.h"
#include "fakes/FakeMainQueue.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tunelark {
namespace {

using test::readAll;

constexpr int kEntries = 300;

class StoreDamageTest : public ::testing::Test {
protected:
    // A store of kEntries audio entries, its write-ahead log folded back into the file.
    void makeStore() {
        {
            Store store(path, queue);
            for (int i = 0; i < kEntries; ++i) {
                auto entry = store.insertMp3Entity();
                entry->filePath = "file:///music/" + std::to_string(i) + ".mp3";
                entry->no = static_cast<std::int16_t>(i + 1);
            }
            ASSERT_EQ(store.saveNow(), std::nullopt);
        }
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(db, "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(db);
    }

    std::unique_ptr<Store> openStore() {
        return std::make_unique<Store>(path, queue, [this](const std::string& why) { fatal.push_back(why); });
    }

    test::TempDir dir;
    std::string path = dir.file("Tunelark.sqlite");
    test::FakeMainQueue queue;
    std::vector<std::string> fatal;
};

// Cut by a full disk or a copy that stopped: in the header, within the first page, at a page boundary
// and inside the last pages. (A cut inside the last page's free space would pass for a whole file.)
TEST_F(StoreDamageTest, ATruncatedStoreIsReportedAndLeftAsItIs) {
    makeStore();
    const std::string whole = readAll(path);
    ASSERT_GT(whole.size(), 3 * 4096u);
    for (std::size_t length : {std::size_t(50), std::size_t(1000), whole.size() / 4096 / 2 * 4096, whole.size() - 4096 - 100}) {
        test::writeAll(path, whole.substr(0, length));
        fatal.clear();
        testing::internal::CaptureStdout();
        auto store = openStore();
        EXPECT_EQ(store->fetchMp3Entities(), std::nullopt) << length;
        store->insertMp3Entity()->filePath = "file:///new.mp3";
        EXPECT_TRUE(store->saveNow().has_value()) << length;
        store.reset();
        const std::string console = testing::internal::GetCapturedStdout();
        ASSERT_EQ(fatal.size(), 1u) << length;
        EXPECT_EQ(console, "Unresolved error " + fatal[0] + "\n") << length;
        EXPECT_EQ(readAll(path), whole.substr(0, length)) << length << ": the file is never written";
        EXPECT_FALSE(std::filesystem::exists(path + "-wal")) << length;
    }
}

// Garbage over the middle of the file, where the entries' pages are.
TEST_F(StoreDamageTest, GarbageInsideTheStoreIsReportedAndLeftAsItIs) {
    makeStore();
    std::string bytes = readAll(path);
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 3000; ++i) bytes[i] = static_cast<char>(i * 31 + 7);
    test::writeAll(path, bytes);

    testing::internal::CaptureStdout();
    auto store = openStore();
    EXPECT_EQ(store->fetchMp3Entities(), std::nullopt);
    store.reset();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(fatal.size(), 1u);
    EXPECT_EQ(readAll(path), bytes);
}

// Runs the store as an unprivileged user (the tests may run as root, whom permissions do not stop) on a
// store file and folder it may read but not write. Exit status: 0 when it read every entry and its
// save failed with a report, 1 when the open itself was refused, anything else is a fault.
int runAsReader(const std::string& path) {
    const pid_t child = fork();
    if (child == 0) {
        if (getuid() == 0 && setuid(65534) != 0) _exit(10);
        test::FakeMainQueue queue;
        bool refused = false;
        Store store(path, queue, [&](const std::string&) { refused = true; });
        auto entries = store.fetchMp3Entities();
        if (refused) _exit(entries ? 11 : 1);
        if (!entries || entries->size() != static_cast<std::size_t>(kEntries)) _exit(12);
        (*entries)[0]->no = 999;
        store.insertMp3Entity()->filePath = "file:///new.mp3";
        _exit(store.saveNow().has_value() && store.hasChanges() ? 0 : 13);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + status;
}

TEST_F(StoreDamageTest, AStoreThatCannotBeWrittenLosesNothing) {
    makeStore();
    const std::string before = readAll(path);
    chmod(path.c_str(), 0444);
    chmod(dir.path().c_str(), 0555);

    const int outcome = runAsReader(path);
    EXPECT_TRUE(outcome == 0 || outcome == 1) << "exit status " << outcome;

    chmod(dir.path().c_str(), 0755);
    chmod(path.c_str(), 0644);
    EXPECT_EQ(readAll(path), before);
    auto store = openStore();
    auto entries = store->fetchMp3Entities();
    ASSERT_TRUE(entries.has_value());
    EXPECT_EQ(entries->size(), static_cast<std::size_t>(kEntries));
    EXPECT_TRUE(fatal.empty());
}

}  // namespace
}  // namespace tunelark
