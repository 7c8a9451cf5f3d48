// tl-store-churn STORE FOLDER SEED: works a play list with the player's own adding and editing code until it
// is killed: every file of FOLDER not yet in the list is added as its own choice in the open panel (one
// save each), then entries are moved and removed at random. Around each change it prints "saving DIGEST"
// and "saved DIGEST", DIGEST covering every stored attribute and the order of the list, so that a test
// that kills it at any moment knows the states the store may be in. tl-store-churn --digest STORE prints
// the digest of a store.
#include "page/MainVC.h"
#include "engine/PlayerHolder.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"
#include "fakes/FakeProgressIndicator.h"
#include "platform/PosixFileTree.h"
#include "library/AddFiles.h"
#include "library/PlayList.h"
#include "library/PlayListEditor.h"
#include "library/store/FileNames.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>

using namespace tunelark;

namespace {

struct Digest {
    std::uint64_t hash = 14695981039346656037u;
    void add(std::string_view text) {
        for (unsigned char c : std::to_string(text.size()) + ':' + std::string(text)) hash = (hash ^ c) * 1099511628211u;
    }
    void maybe(const std::optional<std::string>& text) { add(text ? "+" + *text : "-"); }
    void maybe(const std::optional<Bytes>& bytes) { maybe(bytes ? std::optional(std::string(bytes->begin(), bytes->end())) : std::nullopt); }
};

// Entries in a fixed order (the store fetches in none); a failed fetch is its own digest.
std::string digestOf(Store& store) {
    auto audio = store.fetchMp3Entities();
    auto lyrics = store.fetchLrcEntities();
    if (!audio || !lyrics) return "unreadable";
    std::vector<Mp3Entity> a;
    std::vector<LrcEntity> l;
    for (const auto& e : *audio) a.push_back(*e);
    for (const auto& e : *lyrics) l.push_back(*e);
    std::ranges::sort(a, {}, [](const Mp3Entity& e) { return std::tuple(e.no, e.filePath); });
    std::ranges::sort(l, {}, &LrcEntity::filePath);
    Digest d;
    int position = 0;
    // Positions rather than numbers: loading the list closes the gap a removal leaves, in a save of its own.
    for (const auto& e : a) {
        for (const auto& text : {e.duration, e.fileName, e.filePath, e.mainPathFileName}) d.maybe(text);
        d.maybe(e.bookmark);
        d.add(std::to_string(++position) + (e.canNotUseNow ? "!" : ""));
    }
    d.add("lyrics " + std::to_string(l.size()));
    for (const auto& e : l) {
        for (const auto& text : {e.charset, e.fileName, e.filePath, e.mainPathFileName}) d.maybe(text);
        d.maybe(e.bookmark);
        d.add(e.canNotUseNow ? "!" : "");
    }
    char hex[32];
    std::snprintf(hex, sizeof hex, "%016llx/%zu", static_cast<unsigned long long>(d.hash), a.size() + l.size());
    return hex;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    test::FakeMainQueue queue;
    if (args.size() == 2 && args[0] == "--digest") {
        Store store(args[1], queue);
        std::cout << digestOf(store) << '\n';
        return 0;
    }
    if (args.size() != 3) {
        std::cerr << "usage: tl-store-churn STORE FOLDER SEED | tl-store-churn --digest STORE\n";
        return 2;
    }
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(args[1])) files.push_back(entry.path().string());
    // Audio before lyrics: a lyric entry without its audio entry is dropped when the list loads.
    std::ranges::sort(files, {}, [](const std::string& f) { return std::pair(!f.ends_with(".mp3"), f); });
    std::mt19937 random(static_cast<unsigned>(std::stoul(args[2])));

    test::FakeDialogs dialogs;
    test::FakePageView page;
    test::FakeAudioPlayerFactory players;
    test::FakeOutputDevice device;
    Store store(args[0], queue);
    PageState pageState;
    MainVC view(queue, &page, pageState);
    PlayList playList(store, queue, view);
    PlayerHolder engine(PlayerDeps{queue, view, store, dialogs, players, device});
    PlayListEditor editor(store, queue, view, playList, engine);
    PosixFileTree tree;
    test::FakeProgressIndicator progress;
    AddFiles adding(store, dialogs, queue, [] {}, tree, progress);  // the page is not watched here
    // Runs one operation and its queued save, printing the state before and after.
    const auto saved = [&](const char* what, const auto& operation) {
        operation();
        std::cout << "saving " << digestOf(store) << ' ' << what << std::endl;
        queue.drain();
        page.scripts.clear();
        if (store.hasChanges()) return false;
        std::cout << "saved " << digestOf(store) << std::endl;
        return true;
    };
    if (!saved("open", [&] { playList.loadPlayList(); })) return 1;
    for (;;) {
        const auto audio = store.fetchMp3Entities();
        const auto lyrics = store.fetchLrcEntities();
        if (!audio || !lyrics) return 1;
        std::set<std::string> stored;
        for (const auto& e : *audio) stored.insert(e->filePath.value_or(""));
        for (const auto& e : *lyrics) stored.insert(e->filePath.value_or(""));
        for (const auto& file : files) {
            if (!stored.contains(fileUrlFromPath(file)) && !saved("add", [&] { adding.addPaths({file}); })) return 1;
        }
        for (int step = 0; step < 300; ++step) {
            const auto current = playList.loadPlayList();
            if (!current || current->mp3FileItems.empty()) break;
            const auto count = static_cast<unsigned>(current->mp3FileItems.size());
            const int from = static_cast<int>(random() % count) + 1, to = static_cast<int>(random() % count) + 1;
            const bool ok = random() % 3 ? saved("move", [&] { editor.moveItem(from, to); })
                                         : saved("remove", [&] { editor.remove(current->mp3FileItems[from - 1].filePath); });
            if (!ok) return 1;
        }
    }
}
