#pragma once
#include "library/store/EntityColumns.h"
#include "library/store/Sqlite.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace tunelark {

// The records of one type that the store has handed out: one object per row, the values last saved for
// each, and the inserts and deletes not saved yet. Changes are found by comparing objects with what was
// saved, so callers may change fields in place.
template <typename T>
class EntityTable {
public:

    // Rows already handed out keep their object (and its unsaved changes); rows deleted but not saved are
    // left out; unsaved inserts come last. Throws sqlite::Error.
    std::vector<std::shared_ptr<T>> fetch(sqlite3* db) {
        prepare(db);
        std::vector<std::shared_ptr<T>> found;
        try {
            while (select_.step()) collect(found);
        } catch (...) {
            select_.reset();  // an unfinished read would keep the file's read lock
            throw;
        }
        select_.reset();
        found.insert(found.end(), inserted_.begin(), inserted_.end());
        return found;
    }

    std::shared_ptr<T> insert() {
        inserted_.push_back(std::make_shared<T>());
        return inserted_.back();
    }

    // A record this table does not know, or knows as deleted already, is left alone.
    void remove(const std::shared_ptr<T>& record) {
        if (!record) return;
        if (auto known = rowOf_.find(record.get()); known != rowOf_.end()) {
            byRow_.at(known->second).deleted = true;
            return;
        }
        // An insert that was never saved simply disappears.
        std::erase(inserted_, record);
    }

    bool hasChanges() const {
        if (!inserted_.empty()) return true;
        return std::any_of(byRow_.begin(), byRow_.end(), [](const auto& item) {
            return item.second.deleted || *item.second.object != item.second.saved;
        });
    }

    // Writes every unsaved change inside the caller's transaction; returns the row ids of the inserts, in
    // order, for saved() once the transaction has committed. Throws sqlite::Error.
    std::vector<std::int64_t> write(sqlite3* db) {
        prepare(db);
        for (auto& [row, entry] : byRow_) {
            if (entry.deleted) {
                remove_.bind(0, row);
                remove_.run();
            } else if (*entry.object != entry.saved) {
                columns().bind(update_, *entry.object);
                update_.bind(static_cast<int>(columns().columns.size()), row);
                update_.run();
            }
        }
        std::vector<std::int64_t> rows;
        rows.reserve(inserted_.size());
        for (const auto& record : inserted_) {
            columns().bind(insert_, *record);
            insert_.run();
            rows.push_back(sqlite3_last_insert_rowid(db));
        }
        return rows;
    }

    // The transaction of write() committed: what was written is now the saved state.
    void saved(const std::vector<std::int64_t>& insertedRows) {
        for (auto it = byRow_.begin(); it != byRow_.end();) {
            if (it->second.deleted) {
                rowOf_.erase(it->second.object.get());
                it = byRow_.erase(it);
            } else {
                it->second.saved = *it->second.object;
                ++it;
            }
        }
        for (std::size_t i = 0; i < insertedRows.size() && i < inserted_.size(); ++i) {
            adopt(insertedRows[i], *inserted_[i], inserted_[i]);
        }
        inserted_.clear();
    }

private:
    struct Entry {
        std::shared_ptr<T> object;
        T saved;
        bool deleted = false;
    };

    void collect(std::vector<std::shared_ptr<T>>& found) {
        const std::int64_t row = select_.integer(0);
        auto known = byRow_.find(row);
        if (known == byRow_.end()) {
            found.push_back(adopt(row, columns().read(select_, 1)));
        } else if (!known->second.deleted) {
            found.push_back(known->second.object);
        }
    }

    std::shared_ptr<T> adopt(std::int64_t row, T values, std::shared_ptr<T> object = nullptr) {
        if (!object) object = std::make_shared<T>(values);
        rowOf_[object.get()] = row;
        byRow_[row] = Entry{object, std::move(values), false};
        return object;
    }

    static const EntityColumns<T>& columns() { return entityColumns<T>(); }

    void prepare(sqlite3* db) {
        if (select_) return;
        const EntityColumns<T>& c = columns();
        const std::string table(c.table);
        select_ = sqlite::Statement(db, "SELECT id, " + c.names() + " FROM " + table + " ORDER BY id");
        insert_ = sqlite::Statement(db, "INSERT INTO " + table + " (" + c.names() + ") VALUES (" +
                                            c.placeholders() + ")");
        update_ = sqlite::Statement(db, "UPDATE " + table + " SET " + c.assignments() + " WHERE id = ?");
        remove_ = sqlite::Statement(db, "DELETE FROM " + table + " WHERE id = ?");
    }

    sqlite::Statement select_;
    sqlite::Statement insert_;
    sqlite::Statement update_;
    sqlite::Statement remove_;
    std::unordered_map<std::int64_t, Entry> byRow_;
    std::unordered_map<const T*, std::int64_t> rowOf_;
    std::vector<std::shared_ptr<T>> inserted_;
};

}  // namespace tunelark
