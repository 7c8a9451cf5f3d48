#pragma once
#include "bridge/BridgeOperations.h"
#include "desktop/DesktopFiles.h"
#include "desktop/MediaPlayer2.h"
#include "desktop/ObservedAudioPlayer.h"
#include "engine/PlayerHolder.h"
#include "library/AddFiles.h"
#include "platform/MainQueue.h"
#include "platform/gdbus/GDBusObjectServer.h"
#include "platform/gstreamer/GstTagReader.h"
#include "platform/gtk/FileDropTarget.h"

#include <functional>
#include <string>
#include <vector>

typedef struct _GtkWidget GtkWidget;

namespace tunelark {

// The desktop's ways into the player: files named by a launch of the program, sent over the media-player
// interface or dropped on the main window, and that interface itself on the session bus. All of them
// run the page's operations. Main thread only; everything in Deps outlives this object.
class DesktopIntegration {
public:
    struct Deps {
        MainQueue& queue;
        PlayerHolder& engine;
        const PageState& page;
        const BridgeOperations& operations;
        AddFiles& addFiles;
        ObservedAudioPlayerFactory& players;  // the engine's players
        GtkWidget* dropArea;
        std::function<void()> raise;
        std::function<void()> quit;
    };

    explicit DesktopIntegration(Deps deps);
    ~DesktopIntegration();
    DesktopIntegration(const DesktopIntegration&) = delete;
    DesktopIntegration& operator=(const DesktopIntegration&) = delete;

    // Files named on the command line of this launch or of a later one.
    void open(std::vector<std::string> paths) { files_.open(std::move(paths)); }

private:
    ObservedAudioPlayerFactory& players_;
    PlayerHolder& engine_;
    DesktopFiles files_;
    GstTagReader tagReader_;
    MediaPlayer2 mediaPlayer_;
    GDBusObjectServer bus_;
    FileDropTarget drop_;
};

}  // namespace tunelark
