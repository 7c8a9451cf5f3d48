#include "library/store/EntityColumns.h"

namespace tunelark {

namespace {

template <typename T, typename Piece>
std::string joined(const EntityColumns<T>& table, Piece piece, std::string_view separator = ", ") {
    std::string text;
    for (const auto& column : table.columns) {
        if (!text.empty()) text += separator;
        text += piece(column);
    }
    return text;
}

}  // namespace

template <typename T>
std::string EntityColumns<T>::names() const {
    return joined(*this, [](const Column<T>& c) { return std::string(c.name); });
}

template <typename T>
std::string EntityColumns<T>::placeholders() const {
    return joined(*this, [](const Column<T>&) { return std::string("?"); });
}

template <typename T>
std::string EntityColumns<T>::assignments() const {
    return joined(*this, [](const Column<T>& c) { return std::string(c.name) + " = ?"; });
}

template <typename T>
std::string EntityColumns<T>::createTable() const {
    const std::string columnsSql =
        joined(*this, [](const Column<T>& c) { return std::string(c.name) + " " + c.declaration; }, ",\n    ");
    return "CREATE TABLE " + std::string(table) + " (\n    id INTEGER PRIMARY KEY,\n    " + columnsSql + "\n) STRICT;\n";
}

template <typename T>
void EntityColumns<T>::bind(sqlite::Statement& statement, const T& record) const {
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i].bind(statement, static_cast<int>(i), record);
}

template <typename T>
T EntityColumns<T>::read(const sqlite::Statement& statement, int first) const {
    T record;
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i].read(statement, first + static_cast<int>(i), record);
    return record;
}

template <>
const EntityColumns<Mp3Entity>& entityColumns() {
    static const EntityColumns<Mp3Entity> table{
        "mp3_entity",
        {column<&Mp3Entity::bookmark>("bookmark"), column<&Mp3Entity::canNotUseNow>("can_not_use_now"),
         column<&Mp3Entity::duration>("duration"), column<&Mp3Entity::fileName>("file_name"),
         column<&Mp3Entity::filePath>("file_path"), column<&Mp3Entity::mainPathFileName>("main_path_file_name"),
         column<&Mp3Entity::no>("no")}};
    return table;
}

template <>
const EntityColumns<LrcEntity>& entityColumns() {
    static const EntityColumns<LrcEntity> table{
        "lrc_entity",
        {column<&LrcEntity::bookmark>("bookmark"), column<&LrcEntity::canNotUseNow>("can_not_use_now"),
         column<&LrcEntity::charset>("charset"), column<&LrcEntity::fileName>("file_name"),
         column<&LrcEntity::filePath>("file_path"), column<&LrcEntity::mainPathFileName>("main_path_file_name")}};
    return table;
}

template <>
const EntityColumns<SettingsEntity>& entityColumns() {
    static const EntityColumns<SettingsEntity> table{
        "settings_entity", {column<&SettingsEntity::key>("key"), column<&SettingsEntity::value>("value")}};
    return table;
}

std::string createTablesSql() {
    return entityColumns<Mp3Entity>().createTable() + entityColumns<LrcEntity>().createTable() +
           entityColumns<SettingsEntity>().createTable();
}

template struct EntityColumns<Mp3Entity>;
template struct EntityColumns<LrcEntity>;
template struct EntityColumns<SettingsEntity>;

}  // namespace tunelark
