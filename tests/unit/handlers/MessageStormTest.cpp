// A page that posts 20,000 messages as fast as it can while a track plays: transport, speed, mode,
// lyric jumps, seeks and moves, mixed with bodies of every wrong shape sent to every message. The
// handlers drive the real engine, play-list editor and store, on fakes of the player and the page.
// Afterwards the page's last word on each piece of state matches the state, and the store holds the
// whole play list.
#include "bridge/JsCallReader.h"
#include "bridge/MainVC.h"
#include "bridge/handlers/HandlerTable.h"
#include "engine/Engine.h"
#include "engine/PlaybackClock.h"
#include "engine/PlaybackTexts.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"
#include "library/PlayList.h"
#include "library/PlayListEditor.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <random>
#include <set>

namespace tunelark {
namespace {

constexpr int kSongs = 12;
constexpr int kMessages = 20000;

class MessageStormTest : public ::testing::Test {
protected:
    MessageStormTest() {
        // In memory when the system has it: thousands of saves, each synced to the disk, would take minutes.
        const std::filesystem::path base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm"
                                                                                      : std::filesystem::temp_directory_path();
        std::string pattern = (base / "tl-storm-XXXXXX").string();
        dir = mkdtemp(pattern.data());
        store = std::make_unique<Store>(dir + "/Tunelark.sqlite", queue);
        for (int i = 0; i < kSongs; ++i) addSong("song " + std::to_string(i));
        view.storedMp3Entities.emplace();
        view.storedLrcEntities.emplace();
        engine = std::make_unique<Engine>(PlayerDeps{queue, *store, dialogs, players, device,
                                                     [] { return std::string("en-US"); }, [this] { return random(); }});
        playList = std::make_unique<PlayList>(*store, queue);
        editor = std::make_unique<PlayListEditor>(*store, queue, *playList, *engine);
        playList->loadPlayList();
        handlers = registerHandlers(page, queue, operations());
    }
    ~MessageStormTest() override {
        handlers.clear();
        editor.reset();
        engine.reset();
        store.reset();
        std::filesystem::remove_all(dir);
    }

    void addSong(const std::string& stem) {
        const std::string mp3 = dir + "/" + stem + ".mp3";
        const std::string lrc = dir + "/" + stem + ".lrc";
        std::ofstream(mp3) << "audio";
        std::ofstream(lrc) << "[00:01.00]one\n[00:05.00]two\n[00:20.00]three\n[01:00.00]four\n";
        auto audio = store->insertMp3Entity();
        audio->bookmark = makeBookmark(mp3);
        audio->fileName = stem + ".mp3";
        audio->filePath = fileUrlFromPath(mp3);
        audio->mainPathFileName = getMainPathFileName(*audio->filePath);
        audio->duration = "00:00";
        audio->no = static_cast<std::int16_t>(urls.size() + 1);
        urls.push_back(*audio->filePath);
        auto lyrics = store->insertLrcEntity();
        lyrics->bookmark = makeBookmark(lrc);
        lyrics->fileName = stem + ".lrc";
        lyrics->filePath = fileUrlFromPath(lrc);
        lyrics->mainPathFileName = getMainPathFileName(*lyrics->filePath);
        lyrics->charset = "utf8";
        ASSERT_EQ(store->saveNow(), std::nullopt);
    }

    BridgeOperations operations() {
        BridgeOperations o;
        o.play = [this] { engine->get().play(); };
        o.playItem = [this](const std::string& path) { engine->get().playItem(path); };
        o.pause = [this] { engine->get().pause(); };
        o.changeMode = [this] { engine->get().changeMode(); };
        o.playNext = [this] { engine->get().playNext(); };
        o.playPrev = [this] { engine->get().playPrevious(); };
        o.setCurrentPercent = [this](double percent) { engine->clock().seekPercent(percent); };
        o.speedUp = [this] { engine->clock().speedUp(); };
        o.speedDown = [this] { engine->clock().speedDown(); };
        o.playNextLyric = [this] { engine->clock().nextLyric(); };
        o.playPrevLyric = [this] { engine->clock().previousLyric(); };
        o.moveItem = [this](int from, int to) { editor->moveItem(from, to); };
        o.setCharset = [this](const std::string& mainPath, const std::string& charset) {
            editor->setCharset(mainPath, charset);
        };
        return o;
    }

    std::uint32_t random() { return static_cast<std::uint32_t>(rng()); }

    // One message of a busy page: mostly well-formed, some with bodies of a wrong shape.
    std::pair<std::string, std::string> nextMessage() {
        static const std::vector<std::string> bodyless{
            "nativePlay", "nativePause", "nativePauseItem", "nativeChangeMode", "nativePlayNext", "nativePlayPrev",
            "nativePlayNextLyric", "nativePlayPrevLyric", "nativeSpeedUp", "nativeSpeedDown", "nativeLog",
            "stopMoveWindow"};
        static const std::vector<std::string> wrongBodies{
            "null", "42", "[1,\"a\"]", "{\"filePath\":{\"nested\":\"x\"}}", "{\"fromIndex\":2,\"toIndex\":3}",
            "{\"currentPercent\":5000}", "{\"filePath\":null}", "{\"fromIndex\":\"-1\",\"toIndex\":\"99999\"}",
            "{\"currentPercent\":\"1e999\"}", "{\"currentPercent\":\"abc\"}", "\"just text\"", "{"};
        const auto pick = [&](std::size_t n) { return static_cast<std::size_t>(rng() % n); };
        switch (pick(10)) {
        case 0: case 1: case 2: case 3: return {bodyless[pick(bodyless.size())], "null"};
        case 4: return {"nativePlayItem", nlohmann::json{{"filePath", urls[pick(urls.size())]}}.dump()};
        case 5:
            return {"nativeSetCurrentPercent", nlohmann::json{{"currentPercent", std::to_string(pick(10001))}}.dump()};
        case 6:
            return {"nativeMoveItem", nlohmann::json{{"fromIndex", std::to_string(pick(kSongs))},
                                                     {"toIndex", std::to_string(pick(kSongs))}}.dump()};
        case 7: {
            const auto& rows = handlerTable();
            return {std::string(rows[pick(rows.size())].messageName), wrongBodies[pick(wrongBodies.size())]};
        }
        case 8: return {"nativeSetCharset", nlohmann::json{{"mainPathFileName", getMainPathFileName(urls[pick(kSongs)])},
                                                            {"charset", pick(2) ? "utf8" : "big5"}}.dump()};
        default: {
            const auto& rows = handlerTable();
            return {std::string(rows[pick(rows.size())].messageName), "{\"text\":\"" + std::string(pick(100) == 0 ? 1 << 20 : 3, 'x') + "\"}"};
        }
        }
    }

    // The page's last call of a function, read as the page reads it.
    std::optional<std::string> lastArgument(const std::string& function) {
        for (auto it = page.scripts.rbegin(); it != page.scripts.rend(); ++it) {
            if (!it->starts_with(function + "(")) continue;
            if (function == "setIsPlaying") return it->substr(function.size() + 1, it->size() - function.size() - 3);
            auto call = test::JsCallReader::read(*it);
            if (!call || call->arguments.size() != 1) return "unreadable: " + *it;
            return call->arguments[0];
        }
        return std::nullopt;
    }

    std::string dir;
    std::mt19937 rng{20260101};
    std::vector<std::string> urls;
    test::FakeMainQueue queue;
    test::FakePageView page;
    test::FakeDialogs dialogs;
    test::FakeAudioPlayerFactory players;
    test::FakeOutputDevice device;
    std::unique_ptr<Store> store;
    MainVC view{queue, &page};
    std::unique_ptr<Engine> engine;
    std::unique_ptr<PlayList> playList;
    std::unique_ptr<PlayListEditor> editor;
    std::vector<std::shared_ptr<const ByJsHandler>> handlers;
};

TEST_F(MessageStormTest, TwentyThousandMessagesLeaveThePageAndTheStoreConsistent) {
    testing::internal::CaptureStdout();  // one console line per message
    page.post("nativePlayItem", nlohmann::json{{"filePath", urls[0]}}.dump());
    for (int i = 0; i < kMessages; ++i) {
        const auto [name, body] = nextMessage();
        ASSERT_TRUE(page.post(name, body)) << name;
        // The main loop runs queued work and the clock between bursts of messages; tracks end now and then.
        if (rng() % 4 == 0) queue.drain();
        if (rng() % 50 == 0) queue.advance(std::chrono::milliseconds(100));
        if (auto track = players.last(); track && !track->destroyed && rng() % 200 == 0) {
            track->advance(1.0);
            if (rng() % 2 == 0) track->finish();
        }
    }
    queue.drain();
    testing::internal::GetCapturedStdout();

    auto track = players.last();
    ASSERT_NE(track, nullptr) << "some track was opened";
    PlayerUtil& player = engine->get();
    const bool playing = player.mp3Player() && player.mp3Player()->isPlaying();
    EXPECT_EQ(lastArgument("setIsPlaying"), playing ? "true" : "false");
    EXPECT_EQ(lastArgument("setSpeed"), std::string(kSpeeds[static_cast<std::size_t>(player.speedIdx())]));
    EXPECT_EQ(lastArgument("setMode"), view.playMode);
    EXPECT_EQ(lastArgument("setPlayingFilePath"), view.playingFilePath);
    if (player.mp3Player()) {
        EXPECT_FLOAT_EQ(track->rate, player.rate()) << "the player runs at the speed shown";
    }
    for (const std::string& script : page.scripts) {
        if (script.starts_with("setIsPlaying(") || script.starts_with("setSliderCurrentValue(")) continue;
        EXPECT_TRUE(test::JsCallReader::read(script).has_value()) << script.substr(0, 200);
    }

    // Every entry is still stored, numbered 1..n without gaps.
    test::FakeMainQueue otherQueue;
    Store reopened(dir + "/Tunelark.sqlite", otherQueue);
    auto stored = reopened.fetchMp3Entities().value();
    std::set<std::string> paths;
    std::set<int> numbers;
    for (const auto& entry : stored) {
        paths.insert(entry->filePath.value_or(""));
        numbers.insert(entry->no);
    }
    EXPECT_EQ(paths, std::set<std::string>(urls.begin(), urls.end()));
    EXPECT_EQ(numbers.size(), static_cast<std::size_t>(kSongs));
    EXPECT_EQ(*numbers.begin(), 1);
    EXPECT_EQ(*numbers.rbegin(), kSongs);
}

}  // namespace
}  // namespace tunelark
