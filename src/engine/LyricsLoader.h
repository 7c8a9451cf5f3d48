#pragma once
#include "engine/EngineDeps.h"
#include "engine/lyrics/LrcTimeline.h"
#include "library/store/Entities.h"

#include <string>

namespace tunelark {

// Load lyrics: fills the timeline with the lyric file that belongs to the main view's current item,
// opened through its bookmark and decoded in its chosen encoding. Main thread only.
class LyricsLoader {
public:
    LyricsLoader(PlayerDeps& deps, EngineSeams& seams) : deps_(deps), seams_(seams) {}

    // Takes the timeline lock for the whole run; must not be called with it held.
    void load(LrcTimeline& timeline);

private:
    void postAlert(std::string text);
    void postClearedLyricText();

    PlayerDeps& deps_;
    EngineSeams& seams_;
};

// "You need to redo Add Operation for lrc:" (localised), the file name, " (", the file path, ")".
std::string staleLyricsAlertText(const LrcEntity& entry);
// The localised "Can not open lrc file:{0} in charset:{2} ({1})" with the file name, path and shown
// encoding name put in; a placeholder inside a put-in value stays as it is.
std::string unreadableLyricsAlertText(const LrcEntity& entry, const std::string& shownCharset);

}  // namespace tunelark
