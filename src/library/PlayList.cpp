#include "library/PlayList.h"

#include "engine/Speeds.h"
#include "engine/lyrics/CharsetEnum.h"
#include "library/store/FileNames.h"
#include "page/PageCalls.h"
#include "platform/Console.h"
#include "platform/JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

namespace tunelark {

namespace {

template <typename Entity>
bool hasPageTexts(const Entity& entity) {
    return entity.fileName && entity.filePath && entity.mainPathFileName;
}

// Both lists whole, with every text the page needs; nothing (logged) otherwise.
template <typename Entity>
std::optional<Records<Entity>> complete(std::optional<Records<Entity>> fetched, const char* kind) {
    if (!fetched) {
        consoleLine(std::string("loadPlayList: the stored ") + kind + " entries could not be fetched");
        return std::nullopt;
    }
    for (const auto& entity : *fetched) {
        if (!hasPageTexts(*entity)) {
            consoleLine(std::string("loadPlayList: a stored ") + kind +
                        " entry lacks its fileName, filePath or mainPathFileName");
            return std::nullopt;
        }
    }
    return fetched;
}

// Sorts by position (equal positions keep their fetch order) and numbers the entries 1..n.
std::vector<Mp3FileItem> renumber(Records<Mp3Entity>& entities) {
    std::stable_sort(entities.begin(), entities.end(), [](const auto& a, const auto& b) { return a->no < b->no; });
    std::vector<Mp3FileItem> items;
    items.reserve(entities.size());
    int no = 0;
    for (const auto& entity : entities) {
        ++no;
        // Positions are 16-bit; adding files stops at 32767, so more entries do not occur.
        entity->no = static_cast<std::int16_t>(no);
        items.push_back(Mp3FileItem{*entity->fileName, *entity->filePath, no, "", *entity->mainPathFileName});
        consoleLine("fileName:::" + *entity->fileName);
        consoleLine("filePath:::" + *entity->filePath);
    }
    return items;
}

std::vector<LrcFileItem> lrcItems(const Records<LrcEntity>& entities) {
    std::vector<LrcFileItem> items;
    items.reserve(entities.size());
    for (const auto& entity : entities) {
        items.push_back(LrcFileItem{*entity->fileName, *entity->filePath, entity->charset.value_or("utf8"),
                                    *entity->mainPathFileName});
        consoleLine("lrcEntity.mainPathFileName!:::" + *entity->mainPathFileName);
    }
    return items;
}

// Deletes every lyric entry whose file path pairs with no audio entry's. Each main path is computed
// once, so the work grows with the sum of the two lists, not their product.
void removeOrphans(Store& store, const Records<Mp3Entity>& audio, const Records<LrcEntity>& lyrics) {
    std::unordered_map<std::string, int> audioPerMainPath;
    for (const auto& entity : audio) ++audioPerMainPath[getMainPathFileName(*entity->filePath)];
    for (const auto& entity : lyrics) {
        const auto found = audioPerMainPath.find(getMainPathFileName(*entity->filePath));
        if (found == audioPerMainPath.end()) {
            consoleLine(*entity->filePath + ":not found");
            store.remove(entity);
            continue;
        }
        for (int i = 0; i < found->second; ++i) consoleLine(*entity->filePath + ":found");
    }
}

}  // namespace

PlayList::PlayList(Store& store, MainQueue& queue, MainVC& view) : store_(store), queue_(queue), view_(view) {}

std::optional<PlayListRecords> PlayList::loadPlayList() {
    auto audio = complete(store_.fetchMp3Entities(), "audio");
    if (!audio) return std::nullopt;
    auto lyrics = complete(store_.fetchLrcEntities(), "lyric");
    if (!lyrics) return std::nullopt;

    PlayListRecords records;
    records.mp3FileItems = renumber(*audio);
    records.lrcFileItems = lrcItems(*lyrics);
    removeOrphans(store_, *audio, *lyrics);
    store_.saveChanges();

    view_.state().storedMp3Entities = std::move(*audio);
    view_.state().storedLrcEntities = std::move(*lyrics);
    return records;
}

void PlayList::sendPlayList() {
    if (!view_.hasPage()) return;
    const auto records = loadPlayList();
    if (!records || records->mp3FileItems.empty()) {
        view_.evaluate(setPlayListScript("[]", "[]"));
        return;
    }
    const std::string mp3Content = jsStringContent(mp3FileItemsJson(records->mp3FileItems));
    consoleLine("native mp3FileItemsJsonString::::" + mp3Content);
    const std::string lrcContent = jsStringContent(lrcFileItemsJson(records->lrcFileItems));
    consoleLine("native lrcFileItemsJsonString::::" + lrcContent);
    view_.evaluate(setPlayListScriptFromContents(mp3Content, lrcContent));
}

void PlayList::startExchange() {
    consoleLine("启动时，清理一次已存储的播放单文件列表中不需要的lrc文件内容，并发送文件列表给UI");
    queue_.post([this] { sendPlayList(); });
    if (!view_.hasPage()) return;
    sendCharsetNames();
    view_.setMode();  // queued; reads the play mode when it runs
}

void PlayList::sendCharsetNames() {
    const std::string names = compactJson(nlohmann::json(allCharsetNames()));
    consoleLine("native allSupportedCharsetNamesJsonString::::" + jsStringContent(names));
    view_.evaluate(setAllSupportedCharsetNamesScript(names));
}

// The position follows with the next clock tick.
void PlayList::restorePage() {
    queue_.post([this] { sendPlayList(); });
    if (!view_.hasPage()) return;
    sendCharsetNames();
    view_.setMode();
    view_.sendPlaybackAgain(std::string(kSpeeds[kInitialSpeedIdx]));
    view_.setLyricsSwitches(lyricsWindowShown_ && lyricsWindowShown_());
}

}  // namespace tunelark
