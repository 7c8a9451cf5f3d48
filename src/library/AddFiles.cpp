#include "library/AddFiles.h"

#include "library/MediaKind.h"
#include "library/store/Bookmark.h"
#include "library/store/FileNames.h"
#include "platform/Console.h"
#include "platform/Localized.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace tunelark {
namespace {

FileKind kindOf(std::string_view url) { return kindOfName(lastComponentDecoded(url)); }

// The first fetched entry for each file path, found in constant time: a folder brings thousands of files.
template <typename T>
class ByFilePath {
public:
    explicit ByFilePath(const Records<T>& records) {
        index_.reserve(records.size());
        for (const auto& record : records)
            if (record->filePath) index_.emplace(*record->filePath, record);
    }
    std::shared_ptr<T> find(const std::string& url) const {
        const auto found = index_.find(url);
        return found == index_.end() ? nullptr : found->second;
    }

private:
    std::unordered_map<std::string, std::shared_ptr<T>> index_;
};

}  // namespace

AddFiles::AddFiles(Store& store, Dialogs& dialogs, MainQueue& queue, std::function<void()> sendPlayList,
                   const FileTree& tree, ProgressIndicator& progress, AddRequests::Launcher launcher)
    : store_(store),
      dialogs_(dialogs),
      queue_(queue),
      sendPlayList_(std::move(sendPlayList)),
      requests_(queue, tree, progress, [this](const std::vector<std::string>& paths) { return addPaths(paths); },
                std::move(launcher)) {}

void AddFiles::run() {
    dialogs_.alert(localized(
        "To Add to the play list, Please Choose the mp3 file(s) and the lrc file(s). Attention: lrc file must be "
        "in the same folder with the related mp3 file!"));
    auto chosen = dialogs_.chooseFiles(
        {localized("Please Choose the mp3 file(s) and the lrc file(s):"), {"lrc", "mp3"}, localized("Add Folder")});
    if (!chosen) return;
    add(std::move(*chosen));
}

void AddFiles::add(std::vector<std::string> paths, AddRequests::Added added) {
    requests_.add(std::move(paths), std::move(added));
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
    // A file named twice (on its own and inside a chosen folder) is still stored once.
    urls.erase(std::unique(urls.begin(), urls.end()), urls.end());
    const ByFilePath<Mp3Entity> audioByPath(*audio);
    const ByFilePath<LrcEntity> lyricsByPath(*lyrics);

    const int storedCount = static_cast<int>(audio->size());
    int k = 1;
    int refused = 0;
    for (const auto& url : urls) {
        consoleLine(url);
        FileKind kind = kindOf(url);
        if (kind == FileKind::Other) continue;
        auto existingAudio = kind == FileKind::Audio ? audioByPath.find(url) : nullptr;
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
            auto entry = lyricsByPath.find(url);
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
