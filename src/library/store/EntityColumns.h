#pragma once
#include "library/store/Entities.h"
#include "library/store/Sqlite.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tunelark {

// How one field type is stored: its column declaration (STRICT tables refuse a value of another type;
// the CHECKs keep what is read back within what the field holds), and how it is bound and read.
template <typename V>
struct ColumnType;

template <>
struct ColumnType<std::optional<Bytes>> {
    static std::string declaration(std::string_view) { return "BLOB"; }
    static void bind(sqlite::Statement& s, int index, const std::optional<Bytes>& v) { s.bind(index, v); }
    static std::optional<Bytes> read(const sqlite::Statement& s, int column) { return s.blob(column); }
};

template <>
struct ColumnType<std::optional<std::string>> {
    static std::string declaration(std::string_view) { return "TEXT"; }
    static void bind(sqlite::Statement& s, int index, const std::optional<std::string>& v) { s.bind(index, v); }
    static std::optional<std::string> read(const sqlite::Statement& s, int column) { return s.text(column); }
};

template <>
struct ColumnType<bool> {
    static std::string declaration(std::string_view name) {
        return "INTEGER NOT NULL CHECK (" + std::string(name) + " IN (0, 1))";
    }
    static void bind(sqlite::Statement& s, int index, bool v) { s.bind(index, std::int64_t{v}); }
    static bool read(const sqlite::Statement& s, int column) { return s.integer(column) != 0; }
};

template <>
struct ColumnType<std::int16_t> {
    static std::string declaration(std::string_view name) {
        return "INTEGER NOT NULL CHECK (" + std::string(name) + " BETWEEN -32768 AND 32767)";
    }
    static void bind(sqlite::Statement& s, int index, std::int16_t v) { s.bind(index, std::int64_t{v}); }
    static std::int16_t read(const sqlite::Statement& s, int column) {
        return static_cast<std::int16_t>(s.integer(column));
    }
};

// One column of a record's table: its name, its declaration, and how it binds and reads its field.
template <typename T>
struct Column {
    std::string_view name;
    std::string declaration;
    void (*bind)(sqlite::Statement& statement, int index, const T& record);
    void (*read)(const sqlite::Statement& statement, int column, T& record);
};

template <typename Member>
struct FieldOf;
template <typename Record, typename Value>
struct FieldOf<Value Record::*> {
    using RecordType = Record;
    using ValueType = Value;
};

// The column named `name` that holds the field `Field` (such as &Mp3Entity::fileName).
template <auto Field>
Column<typename FieldOf<decltype(Field)>::RecordType> column(std::string_view name) {
    using Record = typename FieldOf<decltype(Field)>::RecordType;
    using Type = ColumnType<typename FieldOf<decltype(Field)>::ValueType>;
    return {name, Type::declaration(name),
            [](sqlite::Statement& s, int index, const Record& r) { Type::bind(s, index, r.*Field); },
            [](const sqlite::Statement& s, int at, Record& r) { r.*Field = Type::read(s, at); }};
}

// A record type's table: its name and its columns, after the row id "id". Statements are built from them.
template <typename T>
struct EntityColumns {
    std::string_view table;
    std::vector<Column<T>> columns;

    std::string names() const;         // "a, b, c"
    std::string placeholders() const;  // "?, ?, ?"
    std::string assignments() const;   // "a = ?, b = ?, c = ?"
    std::string createTable() const;
    // Binds the record's fields as parameters 0..n-1.
    void bind(sqlite::Statement& statement, const T& record) const;
    // Reads a record from the columns starting at `first`.
    T read(const sqlite::Statement& statement, int first) const;
};

// The table of each record type.
template <typename T>
const EntityColumns<T>& entityColumns();
template <>
const EntityColumns<Mp3Entity>& entityColumns();
template <>
const EntityColumns<LrcEntity>& entityColumns();
template <>
const EntityColumns<SettingsEntity>& entityColumns();

// The statements that create the three tables of the current schema.
std::string createTablesSql();

}  // namespace tunelark
