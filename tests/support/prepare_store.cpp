// tl-prepare-store STORE_PATH FILE...: stores a play list as the player's add-files operation does, the
// files as if chosen together in the open panel, so that tests and benchmarks start the player with a
// list ($XDG_DATA_HOME/Tunelark/Tunelark.sqlite). A missing file, an alert or a failed save: status 1.
#include "fakes/FakeDialogs.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakeProgressIndicator.h"
#include "library/AddFiles.h"
#include "library/store/Store.h"
#include "platform/PosixFileTree.h"

#include <filesystem>
#include <iostream>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: tl-prepare-store STORE_PATH FILE...\n";
        return 2;
    }
    std::vector<std::string> paths;
    for (int i = 2; i < argc; ++i) {
        paths.push_back(std::filesystem::absolute(argv[i]).lexically_normal().string());
        if (!std::filesystem::is_regular_file(paths.back())) {
            std::cerr << "tl-prepare-store: not a file: " << argv[i] << '\n';
            return 1;
        }
    }
    tunelark::test::FakeMainQueue queue;
    tunelark::test::FakeDialogs dialogs;
    tunelark::Store store(argv[1], queue);
    tunelark::PosixFileTree tree;
    tunelark::test::FakeProgressIndicator progress;
    tunelark::AddFiles addFiles(store, dialogs, queue, [] {}, tree, progress);
    const bool added = addFiles.addPaths(paths);
    queue.drain();
    const auto failure = store.saveNow();
    for (const auto& message : dialogs.alerts) std::cerr << "tl-prepare-store: " << message << '\n';
    if (failure) std::cerr << "tl-prepare-store: save failed: " << *failure << '\n';
    return added && !failure && dialogs.alerts.empty() && dialogs.errors.empty() && dialogs.questions.empty() ? 0 : 1;
}
