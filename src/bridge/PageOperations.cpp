#include "bridge/PageOperations.h"

namespace tunelark {

BridgeOperations pageOperations(const OperationTargets& t) {
    BridgeOperations o;
    o.showWindow = [&w = t.mainWC] { w.showWindowForPage(); };
    o.startMoveWindow = [&w = t.mainWC] { w.startMoveWindow(); };
    o.changeMaxMin = [&w = t.mainWC] { w.changeMaxMin(); };
    o.alert = [&d = t.dialogs](const std::string& msg) { d.alert(msg); };
    o.doCopy = [&c = t.clipboard](const std::string& text) { c.setText(text); };
    o.toAddMp3 = [&a = t.addFiles] { a.run(); };
    o.clearPlayList = [&e = t.editor] { e.clear(); };
    o.setCharset = [&e = t.editor](const std::string& mainPathFileName, const std::string& charset) {
        e.setCharset(mainPathFileName, charset);
    };
    o.moveItem = [&e = t.editor](int fromNo, int toNo) { e.moveItem(fromNo, toNo); };
    o.remove = [&e = t.editor](const std::string& filePath) { e.remove(filePath); };
    PlayerHolder& engine = t.engine;
    o.play = [&engine] { engine.player().play(); };
    o.playItem = [&engine](const std::string& filePath) { engine.player().playItem(filePath); };
    o.pause = [&engine] { engine.player().pause(); };
    o.changeMode = [&engine] { engine.player().changeMode(); };
    o.playNext = [&engine] { engine.player().playNext(); };
    o.playPrev = [&engine] { engine.player().playPrevious(); };
    o.setCurrentPercent = [&engine](double percent) { engine.player().seekPercent(percent); };
    o.playNextLyric = [&engine] { engine.player().nextLyric(); };
    o.playPrevLyric = [&engine] { engine.player().previousLyric(); };
    o.speedUp = [&engine] { engine.player().speedUp(); };
    o.speedDown = [&engine] { engine.player().speedDown(); };
    LyricsWindowSwitch& lyrics = t.lyricsWindow;
    o.turnLyricsOn = [&lyrics](const std::string& needOn, const std::string& rows) {
        lyrics.turnLyricsOn(needOn, rows);
    };
    o.setRowMode = [&lyrics](const std::string& rows) { lyrics.setRowMode(rows); };
    return o;
}

}  // namespace tunelark
