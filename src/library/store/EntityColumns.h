#pragma once
#include "library/store/Entities.h"
#include "library/store/Sqlite.h"

namespace tunelark {

// How one record type maps to its table. Every table has the row id "id" first, then the columns below in
// the order that bind() and read() use; statements are built from these texts.
template <typename T>
struct EntityColumns;

template <>
struct EntityColumns<Mp3Entity> {
    static constexpr const char* table = "mp3_entity";
    static constexpr const char* names =
        "bookmark, can_not_use_now, duration, file_name, file_path, main_path_file_name, no";
    static constexpr const char* placeholders = "?, ?, ?, ?, ?, ?, ?";
    static constexpr const char* assignments =
        "bookmark = ?, can_not_use_now = ?, duration = ?, file_name = ?, file_path = ?, "
        "main_path_file_name = ?, no = ?";
    static constexpr int count = 7;
    static void bind(sqlite::Statement& statement, const Mp3Entity& record);
    static Mp3Entity read(const sqlite::Statement& statement, int first);
};

template <>
struct EntityColumns<LrcEntity> {
    static constexpr const char* table = "lrc_entity";
    static constexpr const char* names =
        "bookmark, can_not_use_now, charset, file_name, file_path, main_path_file_name";
    static constexpr const char* placeholders = "?, ?, ?, ?, ?, ?";
    static constexpr const char* assignments =
        "bookmark = ?, can_not_use_now = ?, charset = ?, file_name = ?, file_path = ?, main_path_file_name = ?";
    static constexpr int count = 6;
    static void bind(sqlite::Statement& statement, const LrcEntity& record);
    static LrcEntity read(const sqlite::Statement& statement, int first);
};

template <>
struct EntityColumns<SettingsEntity> {
    static constexpr const char* table = "settings_entity";
    static constexpr const char* names = "key, value";
    static constexpr const char* placeholders = "?, ?";
    static constexpr const char* assignments = "key = ?, value = ?";
    static constexpr int count = 2;
    static void bind(sqlite::Statement& statement, const SettingsEntity& record);
    static SettingsEntity read(const sqlite::Statement& statement, int first);
};

// The statements that create the three tables of the current schema.
extern const char* const kCreateTablesSql;

}  // namespace tunelark
