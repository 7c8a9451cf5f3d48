#include "library/PlayListItems.h"

#include "platform/JsonText.h"

namespace tunelark {

// ordered_json keeps the keys in insertion order, which is the order the page contract gives.
std::string mp3FileItemsJson(const std::vector<Mp3FileItem>& items) {
    auto array = nlohmann::ordered_json::array();
    for (const auto& item : items) {
        array.push_back({{"fileName", item.fileName},
                         {"filePath", item.filePath},
                         {"no", item.no},
                         {"duration", item.duration},
                         {"mainPathFileName", item.mainPathFileName}});
    }
    return compactJson(array);
}

std::string lrcFileItemsJson(const std::vector<LrcFileItem>& items) {
    auto array = nlohmann::ordered_json::array();
    for (const auto& item : items) {
        array.push_back({{"fileName", item.fileName},
                         {"filePath", item.filePath},
                         {"charset", item.charset},
                         {"mainPathFileName", item.mainPathFileName}});
    }
    return compactJson(array);
}

}  // namespace tunelark
