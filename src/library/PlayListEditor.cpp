#include "library/PlayListEditor.h"

#include "library/store/FileNames.h"
#include "platform/Console.h"

#include <algorithm>

namespace tunelark {
namespace {

template <typename T>
void removeFirstWithMainPath(Store& store, const std::optional<Records<T>>& records, const std::string& mainPath) {
    if (!records) return;
    for (const auto& record : *records) {
        if (record->mainPathFileName == mainPath) {
            store.remove(record);
            return;
        }
    }
}

}  // namespace

PlayListEditor::PlayListEditor(Store& store, MainQueue& queue, MainVC& view, PlayList& playList, PlayerHolder& engine)
    : store_(store), queue_(queue), view_(view), page_(view.state()), playList_(playList), engine_(engine) {}

bool PlayListEditor::playerIsPlaying() {
    if (!engine_.created()) return false;
    AudioPlayer* player = engine_.player().mp3Player();
    return player && player->isPlaying();
}

void PlayListEditor::remove(const std::string& filePath) {
    const std::string mainPath = getMainPathFileName(filePath);
    removeFirstWithMainPath(store_, page_.storedMp3Entities, mainPath);
    removeFirstWithMainPath(store_, page_.storedLrcEntities, mainPath);
    store_.saveChanges();
    if (page_.playingFilePath == filePath) {
        // The page state's lists still hold the removed entry, so the next track is found from its place.
        const bool wasPlaying = playerIsPlaying();
        PlayerUtil& player = engine_.player();
        player.playNext();
        if (!wasPlaying) player.pause();
    }
    queue_.post([this] { playList_.sendPlayList(); });
}

void PlayListEditor::moveItem(int fromNo, int toNo) {
    const std::string line = "fromNo:::" + std::to_string(fromNo) + ":::toNo:::" + std::to_string(toNo);
    consoleLine(line);
    if (fromNo == toNo) return;
    consoleLine(line);
    auto audio = store_.fetchMp3Entities();
    if (!audio) {
        consoleLine("Can not read the play list; the move is not stored");
        return;
    }
    std::stable_sort(audio->begin(), audio->end(), [](const auto& a, const auto& b) { return a->no < b->no; });
    for (const auto& entry : *audio) {
        const int n = entry->no;
        int renumbered = n;
        if (toNo < fromNo) {
            if (toNo <= n && n < fromNo) renumbered = n + 1;
            else if (n == fromNo) renumbered = toNo;
        } else {
            if (fromNo < n && n <= toNo) renumbered = n - 1;
            else if (n == fromNo) renumbered = toNo;
        }
        entry->no = static_cast<std::int16_t>(renumbered);
    }
    store_.saveChanges();
    playList_.loadPlayList();
}

void PlayListEditor::clear() {
    auto audio = store_.fetchMp3Entities();
    auto lyrics = store_.fetchLrcEntities();
    if (!audio || !lyrics) {
        consoleLine("Can not read the play list; nothing was cleared");
        return;
    }
    for (const auto& entry : *audio) store_.remove(entry);
    for (const auto& entry : *lyrics) store_.remove(entry);
    store_.saveChanges();
    if (engine_.created()) {
        if (AudioPlayer* player = engine_.player().mp3Player()) player->stop();
    }
    page_.playingFilePath.clear();
    view_.setCurrent("-1");
    view_.setDuration("-1");
    view_.setMainFileName("");
    view_.setIsPlaying(false);
    view_.setPlayingFilePath("");
    queue_.post([this] { playList_.sendPlayList(); });
}

void PlayListEditor::setCharset(const std::string& mainPathFileName, const std::string& charset) {
    if (auto lyrics = store_.fetchLrcEntities()) {
        for (const auto& entry : *lyrics) {
            if (entry->mainPathFileName == mainPathFileName) {
                entry->charset = charset;
                break;
            }
        }
    }
    store_.saveChanges();
    engine_.player().loadLyrics();
}

}  // namespace tunelark
