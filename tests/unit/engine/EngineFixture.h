#pragma once
#include "bridge/MainVC.h"
#include "engine/EngineDeps.h"
#include "engine/PlayerUtil.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "library/store/Store.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace tunelark::test {

// A folder of its own under the system's temporary folder, removed afterwards.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tl-engine-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// Scripts in the form the page receives them.
inline std::string isPlaying(bool playing) { return playing ? "setIsPlaying(true);" : "setIsPlaying(false);"; }
inline std::string playingPath(const std::string& p) { return "setPlayingFilePath(\"" + p + "\");"; }
inline std::string current(const std::string& t) { return "setCurrent(\"" + t + "\");"; }
inline std::string durationText(const std::string& t) { return "setDuration(\"" + t + "\");"; }
inline std::string slider(long long v) { return "setSliderCurrentValue(" + std::to_string(v) + ");"; }
inline std::string mainFileName(const std::string& n) { return "setMainFileName(\"" + n + "\");"; }
inline std::string speedText(const std::string& s) { return "setSpeed(\"" + s + "\");"; }

// The engine on fakes of the platform, with a real store and real bookmarks of files in a temporary
// folder, and a main view whose play list the test builds.
class EngineFixture : public ::testing::Test {
protected:
    EngineFixture() {
        seams.setLyricText = [this](const std::string& text) { lyricTexts.push_back(text); };
        view->storedMp3Entities.emplace();
        view->storedLrcEntities.emplace();
        device.id = 0xA;
    }

    PlayerDeps deps() {
        return PlayerDeps{queue, store, dialogs, players, device, [] { return std::string("en-US"); },
                          [this] { return nextRandom; }};
    }

    // An audio entry for a new file, appended to the play list.
    std::shared_ptr<Mp3Entity> addSong(const std::string& fileName) {
        std::string path = dir.file(fileName);
        writeFile(path, "audio");
        auto entry = store.insertMp3Entity();
        entry->bookmark = makeBookmark(path);
        entry->fileName = fileName;
        entry->filePath = fileUrlFromPath(path);
        entry->mainPathFileName = getMainPathFileName(*entry->filePath);
        entry->no = static_cast<std::int16_t>(view->storedMp3Entities->size() + 1);
        view->storedMp3Entities->push_back(entry);
        store.saveNow();
        return entry;
    }

    // An entry whose bookmark cannot be resolved at all.
    std::shared_ptr<Mp3Entity> addLostSong(const std::string& fileName) {
        auto entry = addSong(fileName);
        entry->bookmark = Bytes{'n', 'o', 't', ' ', 'a', ' ', 'b', 'o', 'o', 'k', 'm', 'a', 'r', 'k'};
        store.saveNow();
        return entry;
    }

    std::shared_ptr<LrcEntity> addLyrics(const std::string& fileName, const std::string& text,
                                         std::optional<std::string> charset = std::nullopt) {
        std::string path = dir.file(fileName);
        writeFile(path, text);
        auto entry = store.insertLrcEntity();
        entry->bookmark = makeBookmark(path);
        entry->fileName = fileName;
        entry->filePath = fileUrlFromPath(path);
        entry->mainPathFileName = getMainPathFileName(*entry->filePath);
        entry->charset = std::move(charset);
        view->storedLrcEntities->push_back(entry);
        store.saveNow();
        return entry;
    }

    // Renames the file behind an entry: its bookmark still resolves, but stale.
    void moveAside(const std::string& fileName) {
        std::filesystem::rename(dir.file(fileName), dir.file("moved-" + fileName));
    }

    // Runs the queued page calls and alerts and hands over the scripts sent since the last call.
    std::vector<std::string> sent() {
        queue.drain();
        std::vector<std::string> scripts;
        scripts.swap(page.scripts);
        return scripts;
    }

    std::vector<std::string> timelineTexts(PlayerUtil& player) { return player.timeline().wordLineArray; }

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
    std::unique_ptr<MainVC> view = std::make_unique<MainVC>(queue, &page);
};

}  // namespace tunelark::test
