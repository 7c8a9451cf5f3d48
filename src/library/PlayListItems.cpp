#include "library/PlayListItems.h"

#include <nlohmann/json.hpp>

namespace tunelark {

namespace {

// ordered_json keeps the keys in insertion order, which is the order the page contract gives.
std::string compact(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', /*ensure_ascii=*/false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace

std::string mp3FileItemsJson(const std::vector<Mp3FileItem>& items) {
    auto array = nlohmann::ordered_json::array();
    for (const auto& item : items) {
        array.push_back({{"fileName", item.fileName},
                         {"filePath", item.filePath},
                         {"no", item.no},
                         {"duration", item.duration},
                         {"mainPathFileName", item.mainPathFileName}});
    }
    return compact(array);
}

std::string lrcFileItemsJson(const std::vector<LrcFileItem>& items) {
    auto array = nlohmann::ordered_json::array();
    for (const auto& item : items) {
        array.push_back({{"fileName", item.fileName},
                         {"filePath", item.filePath},
                         {"charset", item.charset},
                         {"mainPathFileName", item.mainPathFileName}});
    }
    return compact(array);
}

}  // namespace tunelark
