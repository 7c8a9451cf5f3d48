#include "library/AddFiles.h"

#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "platform/Console.h"
#include "platform/Localized.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace tunelark {
namespace {

enum class FileKind { Audio, Lyrics, Other };

// Only the last three characters of the name count, in any letter case: "notes.xmp3" is audio too.
FileKind kindOf(std::string_view url) {
    std::string name = lastComponentDecoded(url);
    if (name.size() < 3) return FileKind::Other;
    std::string tail = name.substr(name.size() - 3);
    std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char c) { return std::tolower(c); });
    if (tail == "mp3") return FileKind::Audio;
    if (tail == "lrc") return FileKind::Lyrics;
    return FileKind::Other;
}

template <typename T>
std::shared_ptr<T> findByFilePath(const Records<T>& records, const std::string& url) {
    for (const auto& record : records)
        if (record->filePath == url) return record;
    return nullptr;
}

}  // namespace

AddFiles::AddFiles(Store& store, Dialogs& dialogs, MainQueue& queue, std::function<void()> sendPlayList)
    : store_(store), dialogs_(dialogs), queue_(queue), sendPlayList_(std::move(sendPlayList)) {}

void AddFiles::run() {
    dialogs_.alert(localized(
        "To Add to the play list, Please Choose the mp3 file(s) and the lrc file(s). Attention: lrc file must be "
        "in the same folder with the related mp3 file!"));
    auto chosen = dialogs_.chooseFiles(
        {localized("Please Choose the mp3 file(s) and the lrc file(s):"), {"lrc", "mp3"}});
    if (!chosen) return;
    addPaths(*chosen);
}

bool AddFiles::addPaths(const std::vector<std::string>& paths) {
    // Both lists are read once: with a failed read, new entries would duplicate stored ones.
    auto audio = store_.fetchMp3Entities();
    auto lyrics = store_.fetchLrcEntities();
    if (!audio || !lyrics) {
        consoleLine("Can not read the play list; no file was added");
        dialogs_.alert(localized("The play list could not be read, so no file was added."));
        return false;
    }
    std::vector<std::string> urls;
    urls.reserve(paths.size());
    for (const auto& path : paths) urls.push_back(fileUrlFromPath(path));
    std::sort(urls.begin(), urls.end());

    const int storedCount = static_cast<int>(audio->size());
    int k = 1;
    int refused = 0;
    for (const auto& url : urls) {
        consoleLine(url);
        FileKind kind = kindOf(url);
        if (kind == FileKind::Other) continue;
        auto existingAudio = kind == FileKind::Audio ? findByFilePath(*audio, url) : nullptr;
        if (kind == FileKind::Audio && !existingAudio && storedCount + k > kMaxNo) {
            ++refused;
            continue;
        }
        std::string error;
        auto bookmark = makeBookmark(pathFromFileUrl(url), &error);
        if (!bookmark) {
            consoleLine(error);
            continue;
        }
        if (kind == FileKind::Audio) {
            auto entry = existingAudio;
            if (!entry) {
                entry = store_.insertMp3Entity();
                entry->no = static_cast<std::int16_t>(storedCount + k);
                ++k;
            }
            entry->filePath = url;
            entry->fileName = lastComponentDecoded(url);
            entry->mainPathFileName = getMainPathFileName(url);
            entry->duration = "00:00";
            entry->bookmark = std::move(*bookmark);
        } else {
            auto entry = findByFilePath(*lyrics, url);
            if (!entry) {
                entry = store_.insertLrcEntity();
                entry->charset = "utf8";
            }
            entry->filePath = url;
            entry->fileName = lastComponentDecoded(url);
            entry->mainPathFileName = getMainPathFileName(url);
            entry->bookmark = std::move(*bookmark);
        }
        store_.saveChanges();
    }
    if (refused > 0) {
        consoleLine("Refused audio files beyond the play list's limit: " + std::to_string(refused));
        dialogs_.alert(localized("The play list is full: it holds at most 32767 songs. Files not added: ") +
                       std::to_string(refused));
    }
    queue_.post(sendPlayList_);
    return true;
}

}  // namespace tunelark
