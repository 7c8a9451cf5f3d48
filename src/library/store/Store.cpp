#include "library/store/Store.h"

#include "library/store/EntityColumns.h"
#include "library/store/EntityTable.h"
#include "library/store/Sqlite.h"
#include "platform/Console.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tunelark {

namespace {

constexpr std::int64_t kSchemaVersion = 1;
// Short, so a store locked by another process fails a save (kept for the next one) instead of
// holding up the main thread.
constexpr int kBusyTimeoutMs = 100;

void createParentFolder(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path();
    if (folder.empty()) return;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw sqlite::Error("Can not create the folder " + folder.string() + ": " + error.message());
}

// Reads before anything is written, so a file that is not a store (or is damaged) is left as it is.
std::int64_t checkExistingFile(sqlite3* db) {
    std::string check = sqlite::queryText(db, "PRAGMA quick_check");
    if (check != "ok") {
        std::replace(check.begin(), check.end(), '\n', ' ');  // the description goes on one console line
        throw sqlite::Error("database disk image is malformed: " + check);
    }
    const std::int64_t version = sqlite::queryInteger(db, "PRAGMA user_version");
    if (version > kSchemaVersion) {
        throw sqlite::Error("The store was written by a newer version of Tunelark (schema " +
                            std::to_string(version) + ")");
    }
    if (version == 0 && sqlite::queryInteger(db, "SELECT count(*) FROM sqlite_master") > 0) {
        throw sqlite::Error("The file is a database of another program");
    }
    return version;
}

void createSchema(sqlite3* db) {
    sqlite::Transaction transaction(db);
    sqlite::exec(db, createTablesSql().c_str());
    sqlite::exec(db, ("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
    transaction.commit();
}

}  // namespace

struct Store::Impl {
    enum class State { Closed, Open, Failed };

    Impl(std::string path, MainQueue& queue, FatalHandler onFatal)
        : path(std::move(path)), queue(queue), onFatal(std::move(onFatal)) {}

    bool ensureOpen();
    void open();
    bool hasChanges() const;
    std::optional<std::string> save();
    void runQueuedSave();

    template <typename T>
    std::optional<Records<T>> fetch(EntityTable<T>& table) {
        if (!ensureOpen()) return std::nullopt;
        try {
            return table.fetch(db.get());
        } catch (const sqlite::Error& error) {
            consoleLine(std::string("Fetch failed: ") + error.what());
            return std::nullopt;
        }
    }

    const std::string path;
    MainQueue& queue;
    FatalHandler onFatal;
    State state = State::Closed;
    bool savePending = false;
    // The connection outlives the tables' prepared statements: members are destroyed in reverse order.
    sqlite::Database db;
    EntityTable<Mp3Entity> mp3;
    EntityTable<LrcEntity> lrc;
    EntityTable<SettingsEntity> settings;
};

bool Store::Impl::ensureOpen() {
    if (state != State::Closed) return state == State::Open;
    try {
        open();
        state = State::Open;
        return true;
    } catch (const sqlite::Error& error) {
        db.reset();
        state = State::Failed;
        const std::string description = std::string(error.what()) + " (" + path + ")";
        consoleLine("Unresolved error " + description);
        if (onFatal) {
            onFatal(description);
        } else {
            std::exit(EXIT_FAILURE);
        }
        return false;
    }
}

void Store::Impl::open() {
    createParentFolder(path);
    db = sqlite::openDatabase(path);
    sqlite3_busy_timeout(db.get(), kBusyTimeoutMs);
    const std::int64_t version = checkExistingFile(db.get());
    // WAL with FULL: a save that returned is on the disk, even if the process is killed or power fails
    // right after it.
    sqlite::exec(db.get(), "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL");
    if (version == 0) createSchema(db.get());
}

bool Store::Impl::hasChanges() const { return mp3.hasChanges() || lrc.hasChanges() || settings.hasChanges(); }

std::optional<std::string> Store::Impl::save() {
    if (!ensureOpen()) return std::string("The store could not be opened (") + path + ")";
    if (!hasChanges()) return std::nullopt;
    try {
        sqlite::Transaction transaction(db.get());
        auto mp3Rows = mp3.write(db.get());
        auto lrcRows = lrc.write(db.get());
        auto settingsRows = settings.write(db.get());
        transaction.commit();
        mp3.saved(mp3Rows);
        lrc.saved(lrcRows);
        settings.saved(settingsRows);
        return std::nullopt;
    } catch (const sqlite::Error& error) {
        return std::string(error.what());
    }
}

void Store::Impl::runQueuedSave() {
    savePending = false;
    if (auto error = save()) consoleLine("Failure to save context: " + *error);
}

Store::Store(std::string path, MainQueue& queue, FatalHandler onFatal)
    : impl_(std::make_shared<Impl>(std::move(path), queue, std::move(onFatal))) {}

Store::~Store() = default;

std::optional<Records<Mp3Entity>> Store::fetchMp3Entities() { return impl_->fetch(impl_->mp3); }
std::optional<Records<LrcEntity>> Store::fetchLrcEntities() { return impl_->fetch(impl_->lrc); }
std::optional<Records<SettingsEntity>> Store::fetchSettingsEntities() { return impl_->fetch(impl_->settings); }

std::shared_ptr<Mp3Entity> Store::insertMp3Entity() {
    impl_->ensureOpen();
    return impl_->mp3.insert();
}

std::shared_ptr<LrcEntity> Store::insertLrcEntity() {
    impl_->ensureOpen();
    return impl_->lrc.insert();
}

std::shared_ptr<SettingsEntity> Store::insertSettingsEntity() {
    impl_->ensureOpen();
    return impl_->settings.insert();
}

void Store::remove(const std::shared_ptr<Mp3Entity>& record) { impl_->mp3.remove(record); }
void Store::remove(const std::shared_ptr<LrcEntity>& record) { impl_->lrc.remove(record); }
void Store::remove(const std::shared_ptr<SettingsEntity>& record) { impl_->settings.remove(record); }

bool Store::hasChanges() { return impl_->hasChanges(); }

void Store::saveChanges() {
    // Checked first: callers save after every small change, and comparing every record each time is not free.
    if (impl_->savePending || !impl_->hasChanges()) return;
    impl_->savePending = true;
    std::weak_ptr<Impl> weak = impl_;
    impl_->queue.post([weak] {
        if (auto impl = weak.lock()) impl->runQueuedSave();
    });
}

std::optional<std::string> Store::saveNow() { return impl_->save(); }

}  // namespace tunelark
