#pragma once
#include "library/store/Entities.h"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tunelark::sqlite {

// Every failure inside the store is one of these; the store turns it into a description at its edge.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct DatabaseCloser {
    void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
// An open connection; closing it is the destructor's job.
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;

// Opens (creating when missing) the file; throws with SQLite's description when it cannot.
Database openDatabase(const std::string& path);
// Runs statements that return no rows.
void exec(sqlite3* db, const char* sql);
// The first column of the first row of a query, as text.
std::string queryText(sqlite3* db, const char* sql);
std::int64_t queryInteger(sqlite3* db, const char* sql);

// A prepared statement, finalized by the destructor. Columns and parameters are 0-based here.
class Statement {
public:
    Statement() = default;
    Statement(sqlite3* db, std::string_view sql);

    explicit operator bool() const { return stmt_ != nullptr; }
    // True while a row is available; throws on error.
    bool step();
    // Runs a statement that returns no row, then makes it ready for the next run.
    void run();
    void reset();

    void bind(int index, const std::optional<std::string>& text);
    void bind(int index, const std::optional<Bytes>& blob);
    void bind(int index, std::int64_t value);

    std::optional<std::string> text(int column) const;
    std::optional<Bytes> blob(int column) const;
    std::int64_t integer(int column) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* stmt) const noexcept { sqlite3_finalize(stmt); }
    };
    [[noreturn]] void fail(int code) const;
    void check(int code) const;

    sqlite3* db_ = nullptr;
    std::unique_ptr<sqlite3_stmt, Finalizer> stmt_;
};

// BEGIN IMMEDIATE now; ROLLBACK in the destructor unless commit() succeeded.
class Transaction {
public:
    explicit Transaction(sqlite3* db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    sqlite3* db_;
    bool open_ = true;
};

}  // namespace tunelark::sqlite
