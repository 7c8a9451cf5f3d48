#pragma once
#include "desktop/MediaPlayer2.h"
#include "desktop/MprisIntrospection.h"
#include "desktop/ObservedAudioPlayer.h"
#include "engine/EngineFixture.h"
#include "fakes/FakeBusSignals.h"
#include "fakes/FakeTagReader.h"

namespace tunelark::test {

inline const std::string kInvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";

// The interface over the real engine, wired as in the program; a.mp3 of a.mp3 and b.mp3 (200 s each) plays.
class MediaPlayer2Test : public EngineFixture {
protected:
    MediaPlayer2Test() {
        ops.changeMode = [this] { engine.player().changeMode(); };
        ops.playNext = [this] { engine.player().playNext(); };
        ops.setCurrentPercent = [this](double percent) { engine.player().seekPercent(percent); };
        ops.speedUp = [this] { engine.player().speedUp(); };
        ops.speedDown = [this] { engine.player().speedDown(); };
        observed.setListener({[this] { mpris.positionSet(); }, [this] { mpris.transportChanged(); }});
        engine.seams().afterTick = [this] { mpris.clockTicked(); };
        addSong("a.mp3");
        addSong("b.mp3");
        engine.player().playItem(url("a.mp3"));
        sent();
        mpris.setSignals(&bus);
    }
    std::string url(const std::string& name) { return fileUrlFromPath(dir.file(name)); }
    std::string call(const std::string& method, const std::vector<BusValue>& args) {
        return mpris.callMethod(kMprisPlayerInterface, method, args).value_or(BusError{"none", ""}).name;
    }
    std::string set(const std::string& property, const BusValue& value) {
        return mpris.writeProperty(kMprisPlayerInterface, property, value).value_or(BusError{"none", ""}).name;
    }

    ObservedAudioPlayerFactory observed{players};
    PlayerHolder engine{PlayerDeps{queue, *view, store, dialogs, observed, device}};
    BridgeOperations ops;
    FakeBusSignals bus;
    FakeTagReader tagReader;
    MediaPlayer2 mpris{MediaPlayer2::Deps{queue, engine, pageState, ops, tagReader, dir.file("cache/covers"),
                                          [](auto) {}, [] {}, [] {}}};
};

}  // namespace tunelark::test
