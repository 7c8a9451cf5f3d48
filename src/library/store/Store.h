#pragma once
#include "library/store/Entities.h"
#include "platform/MainQueue.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

template <typename T>
using Records = std::vector<std::shared_ptr<T>>;

// The one local object store (an SQLite file). It opens on its first use, creating the file's folder;
// when it cannot be opened (a file that is not a store, a folder that cannot be made) it writes
// "Unresolved error <description>" and calls onFatal, which by default ends the process with a failure
// status. Such a file is never written. If onFatal returns, fetches fail and saves report an error.
// Main thread only.
class Store {
public:
    using FatalHandler = std::function<void(const std::string& description)>;

    Store(std::string path, MainQueue& queue, FatalHandler onFatal = {});
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // Every record of one type, in no defined order; nothing when the fetch fails. The same stored record
    // is always the same object.
    std::optional<Records<Mp3Entity>> fetchMp3Entities();
    std::optional<Records<LrcEntity>> fetchLrcEntities();
    std::optional<Records<SettingsEntity>> fetchSettingsEntities();

    std::shared_ptr<Mp3Entity> insertMp3Entity();
    std::shared_ptr<LrcEntity> insertLrcEntity();
    std::shared_ptr<SettingsEntity> insertSettingsEntity();

    // A deleted record stays valid in every list that holds it; it is gone from the next fetch.
    void remove(const std::shared_ptr<Mp3Entity>& record);
    void remove(const std::shared_ptr<LrcEntity>& record);
    void remove(const std::shared_ptr<SettingsEntity>& record);

    // True when an insert, a delete or a change of a field is not saved yet.
    bool hasChanges();
    // When there are changes, queues one save of everything on the main queue; a failed save writes
    // "Failure to save context: <description>" and keeps the changes for the next save.
    void saveChanges();
    // Saves at once in one transaction; the error's description when it fails (changes kept).
    std::optional<std::string> saveNow();

private:
    struct Impl;
    // Shared so that a queued save can tell whether the store still exists when it runs.
    std::shared_ptr<Impl> impl_;
};

}  // namespace tunelark
