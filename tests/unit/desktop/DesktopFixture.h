#pragma once
#include "bridge/handlers/BridgeOperations.h"
#include "desktop/DesktopFiles.h"
#include "desktop/MediaPlayer2.h"
#include "desktop/MprisIntrospection.h"
#include "desktop/ObservedAudioPlayer.h"
#include "engine/Engine.h"
#include "engine/EngineFixture.h"
#include "fakes/FakeBusSignals.h"
#include "library/AddFiles.h"
#include "library/PlayList.h"

#include <string>
#include <vector>

namespace tunelark::test {

// The desktop's ways in on the real engine, play list and adding, with fakes of the platform below them,
// the page's operations filled as the program fills them, and the players seen by the media-player
// interface as in the program.
class DesktopFixture : public EngineFixture {
protected:
    DesktopFixture() {
        BridgeOperations& o = operations;
        o.play = [this] { engine.get().play(); };
        o.playItem = [this](const std::string& filePath) { engine.get().playItem(filePath); };
        o.pause = [this] { engine.get().pause(); };
        o.changeMode = [this] { engine.get().changeMode(); };
        o.playNext = [this] { engine.get().playNext(); };
        o.playPrev = [this] { engine.get().playPrevious(); };
        o.setCurrentPercent = [this](double percent) { engine.clock().seekPercent(percent); };
        o.playNextLyric = [this] { engine.clock().nextLyric(); };
        o.playPrevLyric = [this] { engine.clock().previousLyric(); };
        o.speedUp = [this] { engine.clock().speedUp(); };
        o.speedDown = [this] { engine.clock().speedDown(); };
        observed.setListener({[this] { mpris.positionSet(); }, [this] { mpris.transportChanged(); }});
    }

    std::string url(const std::string& fileName) { return fileUrlFromPath(dir.file(fileName)); }
    std::optional<BusValue> property(const std::string& name) { return mpris.readProperty(kMprisPlayerInterface, name); }
    std::optional<BusError> call(const std::string& method, std::vector<BusValue> args = {}) {
        return mpris.callMethod(kMprisPlayerInterface, method, args);
    }
    std::optional<BusError> set(const std::string& name, BusValue value) {
        return mpris.writeProperty(kMprisPlayerInterface, name, value);
    }
    template <typename T>
    T read(const std::string& name) {
        auto value = property(name);
        EXPECT_TRUE(value.has_value()) << name;
        return value ? std::get<T>(*value) : T{};
    }
    BusDict metadata() { return read<BusDict>("Metadata"); }

    ObservedAudioPlayerFactory observed{players};
    Engine engine{PlayerDeps{queue, store, dialogs, observed, device, [] { return std::string("en-US"); },
                             [this] { return nextRandom; }}};
    PlayList playList{store, queue};
    AddFiles addFiles{store, dialogs, queue, [this] { playList.sendPlayList(); }};
    BridgeOperations operations;
    DesktopFiles files{queue, addFiles, operations};
    FakeBusSignals bus;
    int raised = 0;
    int quits = 0;
    MediaPlayer2 mpris{MediaPlayer2::Deps{queue, engine, operations,
                                          [this](std::vector<std::string> paths) { files.open(std::move(paths)); },
                                          [this] { ++raised; }, [this] { ++quits; }}};
};

}  // namespace tunelark::test
