#include "library/store/EntityColumns.h"

namespace tunelark {

// STRICT tables refuse a value of the wrong type instead of converting it; the CHECK keeps "no" within
// the 16 bits the record holds, so nothing read back can be cut short.
const char* const kCreateTablesSql = R"sql(
CREATE TABLE mp3_entity (
    id INTEGER PRIMARY KEY,
    bookmark BLOB,
    can_not_use_now INTEGER NOT NULL CHECK (can_not_use_now IN (0, 1)),
    duration TEXT,
    file_name TEXT,
    file_path TEXT,
    main_path_file_name TEXT,
    no INTEGER NOT NULL CHECK (no BETWEEN -32768 AND 32767)
) STRICT;
CREATE TABLE lrc_entity (
    id INTEGER PRIMARY KEY,
    bookmark BLOB,
    can_not_use_now INTEGER NOT NULL CHECK (can_not_use_now IN (0, 1)),
    charset TEXT,
    file_name TEXT,
    file_path TEXT,
    main_path_file_name TEXT
) STRICT;
CREATE TABLE settings_entity (
    id INTEGER PRIMARY KEY,
    key TEXT,
    value TEXT
) STRICT;
)sql";

void EntityColumns<Mp3Entity>::bind(sqlite::Statement& statement, const Mp3Entity& record) {
    statement.bind(0, record.bookmark);
    statement.bind(1, std::int64_t{record.canNotUseNow});
    statement.bind(2, record.duration);
    statement.bind(3, record.fileName);
    statement.bind(4, record.filePath);
    statement.bind(5, record.mainPathFileName);
    statement.bind(6, std::int64_t{record.no});
}

Mp3Entity EntityColumns<Mp3Entity>::read(const sqlite::Statement& statement, int first) {
    Mp3Entity record;
    record.bookmark = statement.blob(first);
    record.canNotUseNow = statement.integer(first + 1) != 0;
    record.duration = statement.text(first + 2);
    record.fileName = statement.text(first + 3);
    record.filePath = statement.text(first + 4);
    record.mainPathFileName = statement.text(first + 5);
    record.no = static_cast<std::int16_t>(statement.integer(first + 6));
    return record;
}

void EntityColumns<LrcEntity>::bind(sqlite::Statement& statement, const LrcEntity& record) {
    statement.bind(0, record.bookmark);
    statement.bind(1, std::int64_t{record.canNotUseNow});
    statement.bind(2, record.charset);
    statement.bind(3, record.fileName);
    statement.bind(4, record.filePath);
    statement.bind(5, record.mainPathFileName);
}

LrcEntity EntityColumns<LrcEntity>::read(const sqlite::Statement& statement, int first) {
    LrcEntity record;
    record.bookmark = statement.blob(first);
    record.canNotUseNow = statement.integer(first + 1) != 0;
    record.charset = statement.text(first + 2);
    record.fileName = statement.text(first + 3);
    record.filePath = statement.text(first + 4);
    record.mainPathFileName = statement.text(first + 5);
    return record;
}

void EntityColumns<SettingsEntity>::bind(sqlite::Statement& statement, const SettingsEntity& record) {
    statement.bind(0, record.key);
    statement.bind(1, record.value);
}

SettingsEntity EntityColumns<SettingsEntity>::read(const sqlite::Statement& statement, int first) {
    SettingsEntity record;
    record.key = statement.text(first);
    record.value = statement.text(first + 1);
    return record;
}

}  // namespace tunelark
