#pragma once
#include "page/MainVC.h"
#include "engine/PlayerUtil.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "library/store/Store.h"
#include "TempDir.h"

#include <gtest/gtest.h>

namespace tunelark::test {

// Page calls as the page receives them.
inline std::string isPlaying(bool playing) { return playing ? "setIsPlaying(true);" : "setIsPlaying(false);"; }
inline std::string playingPath(const std::string& p) { return "setPlayingFilePath(\"" + p + "\");"; }
inline std::string current(const std::string& t) { return "setCurrent(\"" + t + "\");"; }
inline std::string durationText(const std::string& t) { return "setDuration(\"" + t + "\");"; }
inline std::string slider(long long v) { return "setSliderCurrentValue(" + std::to_string(v) + ");"; }
inline std::string mainFileName(const std::string& n) { return "setMainFileName(\"" + n + "\");"; }
inline std::string speedText(const std::string& s) { return "setSpeed(\"" + s + "\");"; }

// The engine's surroundings on fakes, with a real store and real bookmarks of files in a temporary folder.
class EngineFixture : public ::testing::Test {
protected:
    EngineFixture() {
        seams.setLyricText = [this](const std::string& text) { lyricTexts.push_back(text); };
        pageState.storedMp3Entities.emplace();
        pageState.storedLrcEntities.emplace();
        device.id = 0xA;
    }
    PlayerDeps deps() {
        return {queue, *view, store, dialogs, players, device, [] { return std::string("en-US"); },
                [this] { return nextRandom; }};
    }
    std::string url(const std::string& fileName) const { return fileUrlFromPath(dir.file(fileName)); }

    // A file holding the bytes, its stored entry, and that entry in the main view's list.
    template <typename Entity>
    std::shared_ptr<Entity> add(std::shared_ptr<Entity> entry, std::optional<Records<Entity>>& list,
                                const std::string& fileName, const std::string& bytes) {
        writeAll(dir.file(fileName), bytes);
        entry->bookmark = makeBookmark(dir.file(fileName));
        entry->fileName = fileName;
        entry->filePath = url(fileName);
        entry->mainPathFileName = getMainPathFileName(*entry->filePath);
        list->push_back(entry);
        return entry;
    }
    std::shared_ptr<Mp3Entity> addSong(const std::string& fileName) {
        auto entry = add(store.insertMp3Entity(), pageState.storedMp3Entities, fileName, "audio");
        entry->no = std::int16_t(pageState.storedMp3Entities->size());
        store.saveNow();
        return entry;
    }
    std::shared_ptr<LrcEntity> addLyrics(const std::string& fileName, const std::string& text,
                                         std::optional<std::string> charset = {}) {
        auto entry = add(store.insertLrcEntity(), pageState.storedLrcEntities, fileName, text);
        entry->charset = std::move(charset);
        store.saveNow();
        return entry;
    }
    // Runs the queued page calls and alerts; returns the scripts sent since the last call.
    std::vector<std::string> sent() {
        queue.drain();
        return std::exchange(page.scripts, {});
    }

    TempDir dir;
    FakeMainQueue queue;
    FakePageView page;
    Store store{dir.file("Tunelark.sqlite"), queue};
    FakeDialogs dialogs;
    FakeAudioPlayerFactory players;
    FakeOutputDevice device;
    EngineSeams seams;
    std::vector<std::string> lyricTexts;
    std::uint32_t nextRandom = 0;
    PageState pageState;
    std::unique_ptr<MainVC> view = std::make_unique<MainVC>(queue, &page, pageState);
};

}  // namespace tunelark::test
