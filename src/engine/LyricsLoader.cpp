#include "engine/LyricsLoader.h"

#include "page/MainVC.h"
#include "engine/lyrics/CharsetEnum.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "platform/Localized.h"

#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <sstream>

namespace tunelark {

namespace {

std::optional<std::string> readWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    if (file.bad()) return std::nullopt;
    return std::move(bytes).str();
}

std::shared_ptr<LrcEntity> lyricEntryFor(const PageState& page) {
    if (!page.storedLrcEntities) return nullptr;
    std::string mainPath = getMainPathFileName(page.playingFilePath);
    for (const auto& entry : *page.storedLrcEntities) {
        if (entry && entry->mainPathFileName && *entry->mainPathFileName == mainPath) return entry;
    }
    return nullptr;
}

// Reads and decodes the file behind the bookmark; sets stale as the resolution says.
std::optional<std::string> readLyrics(const LrcEntity& entry, CharsetEnum charset, bool& stale) {
    stale = true;
    if (!entry.bookmark) return std::nullopt;
    ResolvedBookmark resolved = resolveBookmark(*entry.bookmark);
    stale = resolved.stale;
    if (!resolved.location || !startAccessing(*resolved.location)) return std::nullopt;
    std::optional<std::string> text;
    if (auto bytes = readWholeFile(*resolved.location)) text = decodeLyrics(*bytes, charset);
    stopAccessing(*resolved.location);
    return text;
}

}  // namespace

std::string staleLyricsAlertText(const LrcEntity& entry) {
    return localized("You need to redo Add Operation for lrc:") + entry.fileName.value_or("") + " (" +
           entry.filePath.value_or("") + ")";
}

std::string unreadableLyricsAlertText(const LrcEntity& entry, const std::string& shownCharset) {
    const std::string pattern = localized("Can not open lrc file:{0} in charset:{2} ({1})");
    const std::string values[] = {entry.fileName.value_or(""), entry.filePath.value_or(""), shownCharset};
    // One pass over the pattern, so a "{1}" inside a file name is not replaced again.
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '{' && i + 2 < pattern.size() && pattern[i + 2] == '}' && pattern[i + 1] >= '0' &&
            pattern[i + 1] <= '2') {
            text += values[pattern[i + 1] - '0'];
            i += 2;
        } else {
            text += pattern[i];
        }
    }
    return text;
}

void LyricsLoader::load(LrcTimeline& timeline) {
    std::lock_guard lock(timeline.lock());
    timeline.clear();
    std::shared_ptr<LrcEntity> entry = lyricEntryFor(deps_.mainVC.state());
    if (!entry) return;
    ChosenCharset chosen = chooseCharset(entry->charset, deps_.preferredLanguage());
    bool stale = true;
    timeline.lrcString = readLyrics(*entry, chosen.charset, stale);
    if (stale) {
        postAlert(staleLyricsAlertText(*entry));
        entry->canNotUseNow = true;
        if (deps_.store.hasChanges()) deps_.store.saveChanges();
    } else if (!timeline.lrcString) {
        postClearedLyricText();
        postAlert(unreadableLyricsAlertText(*entry, chosen.shownName));
    } else {
        timeline.parse(*timeline.lrcString);
    }
}

void LyricsLoader::postAlert(std::string text) {
    deps_.queue.post([&dialogs = deps_.dialogs, text = std::move(text)] { dialogs.alert(text); });
}

void LyricsLoader::postClearedLyricText() {
    if (auto sink = seams_.setLyricText) deps_.queue.post([sink = std::move(sink)] { sink(""); });
}

}  // namespace tunelark
