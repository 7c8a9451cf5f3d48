#pragma once
#include "bridge/BridgeOperations.h"
#include "desktop/PlayerState.h"
#include "engine/PlayerHolder.h"
#include "platform/DesktopBus.h"
#include "platform/MainQueue.h"
#include "platform/TagReader.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tunelark {

// The desktop's media-player interface (media keys, sound menus, lyric tools): its requests run the same
// operations as the page's messages, so page and desktop always agree, and every change of the state,
// whoever made it, is announced. Main thread only.
class MediaPlayer2 : public BusObject {
public:
    // Changes made by the page are found within this time; changes made here at once.
    static constexpr std::chrono::milliseconds kRefreshInterval{200};
    static constexpr unsigned kTicksPerRefresh = 2;  // of the engine's 0.1 s clock

    struct Deps {
        MainQueue& queue;
        PlayerHolder& engine;
        const PageState& page;  // what the page shows: the play list, the current item and the mode
        const BridgeOperations& operations;  // the page's operations, as the program filled them
        TagReader& tagReader;                // the tags of the tracks
        std::string coverFolder;             // where cover art from the tags is written
        std::function<void(std::vector<std::string> paths)> openFiles;
        std::function<void()> raise;  // shows the main window, as a second launch does
        std::function<void()> quit;   // through the quit decision
    };

    explicit MediaPlayer2(Deps deps);
    MediaPlayer2(const MediaPlayer2&) = delete;
    MediaPlayer2& operator=(const MediaPlayer2&) = delete;

    // Where changes are announced; the present state counts as known. nullptr stops announcing.
    void setSignals(BusSignals* signals);
    // Announces what changed since the last announcement, then Seeked when the position was set meanwhile.
    void refresh();
    // Called after each tick of the engine's clock. Once the clock runs, its ticks are the poll: the
    // poll's own timer stops, saving the main loop one wake-up in two of the clock's.
    void clockTicked();
    // From the players: a position was set, or the transport may have changed. A refresh follows the
    // running operation.
    void positionSet();
    void transportChanged();

    std::optional<BusError> callMethod(const std::string& interfaceName, const std::string& method,
                                       const std::vector<BusValue>& args) override;
    std::optional<BusValue> readProperty(const std::string& interfaceName, const std::string& name) override;
    std::optional<BusError> writeProperty(const std::string& interfaceName, const std::string& name,
                                          const BusValue& value) override;

private:
    using Arguments = std::vector<BusValue>;
    using Member = std::pair<std::string_view, std::string_view>;  // interface, name
    // A method's handler: checks its arguments and runs it.
    using Method = std::optional<BusError> (*)(MediaPlayer2& player, const Arguments& args);
    // A property: how it is read (null: from the player's state) and, when it can be set, written.
    struct Property {
        std::optional<BusValue> (*read)(MediaPlayer2& player) = nullptr;
        std::optional<BusError> (*write)(MediaPlayer2& player, const BusValue& value) = nullptr;
    };
    // Both interfaces' methods and properties by interface and name.
    static const std::map<Member, Method>& methods();
    static const std::map<Member, Property>& properties();

    std::optional<BusError> seek(std::int64_t offset);
    std::optional<BusError> setPosition(const std::string& trackId, std::int64_t position);
    std::optional<BusError> openUri(const std::string& uri);
    std::optional<BusError> setRate(double rate);
    std::optional<BusError> setPlayMode(PlayMode mode);
    // The page's seek to a time of the loaded track.
    void seekTo(double seconds, double duration);
    void queueRefresh();
    void later(std::function<void(MediaPlayer2&)> task);

    Deps deps_;
    CurrentTrackTags tags_;
    PlayerStateReader reader_;
    BusSignals* signals_ = nullptr;
    PlayerState announced_;
    bool refreshQueued_ = false;
    bool seeked_ = false;
    unsigned ticks_ = 0;
    std::unique_ptr<RepeatingTimer> timer_;
    std::shared_ptr<MediaPlayer2*> self_;  // queued tasks reach this object only while it lives
};

}  // namespace tunelark
