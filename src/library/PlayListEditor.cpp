#include "library/PlayListEditor.h"

#include "bridge/MainVC.h"
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

PlayListEditor::PlayListEditor(Store& store, MainQueue& queue, PlayList& playList, Engine& engine)
    : store_(store), queue_(queue), playList_(playList), engine_(engine) {}

bool PlayListEditor::playerIsPlaying() {
    if (!engine_.created()) return false;
    AudioPlayer* player = engine_.get().mp3Player();
    return player && player->isPlaying();
}

void PlayListEditor::remove(const std::string& filePath) {
    const std::string mainPath = getMainPathFileName(filePath);
    MainVC* view = MainVC::shared;
    if (view) {
        removeFirstWithMainPath(store_, view->storedMp3Entities, mainPath);
        removeFirstWithMainPath(store_, view->storedLrcEntities, mainPath);
    }
    store_.saveChanges();
    if (view && view->playingFilePath == filePath) {
        // The view's lists still hold the removed entry, so the next track is found from its place.
        const bool wasPlaying = playerIsPlaying();
        PlayerUtil& player = engine_.get();
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
        if (AudioPlayer* player = engine_.get().mp3Player()) player->stop();
    }
    MainVC* view = MainVC::shared;
    if (!view) return;
    view->playingFilePath.clear();
    view->setCurrent("-1");
    view->setDuration("-1");
    view->setMainFileName("");
    view->setIsPlaying(false);
    view->setPlayingFilePath("");
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
    engine_.get().loadLyrics();
}

}  // namespace tunelark
