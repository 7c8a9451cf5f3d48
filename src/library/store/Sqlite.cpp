#include "library/store/Sqlite.h"

namespace tunelark::sqlite {

namespace {

std::string describe(sqlite3* db, int code) {
    return db ? std::string(sqlite3_errmsg(db)) : std::string(sqlite3_errstr(code));
}

}  // namespace

Database openDatabase(const std::string& path) {
    sqlite3* raw = nullptr;
    // One connection used from the main thread only, so SQLite's own mutexes are not needed.
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
    Database db(raw);
    if (code != SQLITE_OK) throw Error(describe(raw, code));
    sqlite3_extended_result_codes(raw, 1);
    return db;
}

void exec(sqlite3* db, const char* sql) {
    char* message = nullptr;
    const int code = sqlite3_exec(db, sql, nullptr, nullptr, &message);
    if (code != SQLITE_OK) {
        std::string text = message ? message : sqlite3_errstr(code);
        sqlite3_free(message);
        throw Error(text);
    }
}

std::string queryText(sqlite3* db, const char* sql) {
    Statement statement(db, sql);
    if (!statement.step()) throw Error(std::string("no result from ") + sql);
    return statement.text(0).value_or("");
}

std::int64_t queryInteger(sqlite3* db, const char* sql) {
    Statement statement(db, sql);
    if (!statement.step()) throw Error(std::string("no result from ") + sql);
    return statement.integer(0);
}

Statement::Statement(sqlite3* db, std::string_view sql) : db_(db) {
    sqlite3_stmt* raw = nullptr;
    const int code = sqlite3_prepare_v3(db, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                        &raw, nullptr);
    stmt_.reset(raw);
    check(code);
}

void Statement::fail(int code) const { throw Error(describe(db_, code)); }

void Statement::check(int code) const {
    if (code != SQLITE_OK) fail(code);
}

bool Statement::step() {
    const int code = sqlite3_step(stmt_.get());
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    fail(code);
}

void Statement::run() {
    // Reset even when the step fails, so the statement holds no lock and can run again.
    const int code = sqlite3_step(stmt_.get());
    sqlite3_reset(stmt_.get());
    if (code != SQLITE_DONE && code != SQLITE_ROW) fail(code);
}

void Statement::reset() {
    sqlite3_reset(stmt_.get());
    sqlite3_clear_bindings(stmt_.get());
}

void Statement::bind(int index, const std::optional<std::string>& text) {
    if (!text) {
        check(sqlite3_bind_null(stmt_.get(), index + 1));
        return;
    }
    check(sqlite3_bind_text64(stmt_.get(), index + 1, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::bind(int index, const std::optional<Bytes>& blob) {
    if (!blob) {
        check(sqlite3_bind_null(stmt_.get(), index + 1));
    } else if (blob->empty()) {
        // A null pointer would bind NULL; an empty blob must stay an empty blob.
        check(sqlite3_bind_zeroblob(stmt_.get(), index + 1, 0));
    } else {
        check(sqlite3_bind_blob64(stmt_.get(), index + 1, blob->data(), blob->size(), SQLITE_TRANSIENT));
    }
}

void Statement::bind(int index, std::int64_t value) { check(sqlite3_bind_int64(stmt_.get(), index + 1, value)); }

std::optional<std::string> Statement::text(int column) const {
    if (sqlite3_column_type(stmt_.get(), column) == SQLITE_NULL) return std::nullopt;
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(stmt_.get(), column));
    const int size = sqlite3_column_bytes(stmt_.get(), column);
    return data ? std::string(data, static_cast<std::size_t>(size)) : std::string();
}

std::optional<Bytes> Statement::blob(int column) const {
    if (sqlite3_column_type(stmt_.get(), column) == SQLITE_NULL) return std::nullopt;
    const auto* data = static_cast<const std::uint8_t*>(sqlite3_column_blob(stmt_.get(), column));
    const int size = sqlite3_column_bytes(stmt_.get(), column);
    return data ? Bytes(data, data + size) : Bytes();
}

std::int64_t Statement::integer(int column) const { return sqlite3_column_int64(stmt_.get(), column); }

Transaction::Transaction(sqlite3* db) : db_(db) {
    // IMMEDIATE takes the write lock now, so a busy store fails before anything is written.
    exec(db_, "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (open_) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
    exec(db_, "COMMIT");
    open_ = false;
}

}  // namespace tunelark::sqlite
