#pragma once
#include "app/AppDelegate.h"
#include "app/DesktopIntegration.h"
#include "bridge/BridgeOperations.h"
#include "desktop/ObservedAudioPlayer.h"
#include "engine/PlayerHolder.h"
#include "engine/OutputDeviceWatch.h"
#include "library/AddFiles.h"
#include "library/PlayList.h"
#include "library/PlayListEditor.h"
#include "library/store/Store.h"
#include "lyrics_window/LyricsWindowSwitch.h"
#include "main_window/ColorScheme.h"
#include "main_window/MainWC.h"
#include "main_window/NavigationPolicy.h"
#include "main_window/PageFolder.h"
#include "main_window/PageResources.h"
#include "page/MainVC.h"
#include "page/PageState.h"
#include "platform/PosixFileTree.h"
#include "platform/glib/GlibMainQueue.h"
#include "platform/gstreamer/GstAudioPlayerFactory.h"
#include "platform/gtk/DesktopClipboard.h"
#include "platform/gtk/DesktopUrlOpener.h"
#include "platform/gtk/GtkDesktopLook.h"
#include "platform/gtk/GdkScreens.h"
#include "platform/gtk/GtkAppMenu.h"
#include "platform/gtk/GtkDialogs.h"
#include "platform/gtk/GtkHeaderProgress.h"
#include "platform/gtk/GtkMainWindow.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"
#include "platform/pulse/PulseOutputDevice.h"
#include "preferences/PreferencesOpener.h"

#include <memory>
#include <string>
#include <vector>

typedef struct _GtkApplication GtkApplication;

namespace tunelark {

// The running program: the real platform parts wired into the core, in start-up order. Built once
// the toolkit has started; main thread only.
class Application {
public:
    Application(GtkApplication* application, const PageResources& resources);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // A second launch of the program: bring the main window forward (once the page has sized it).
    void reopen();
    // The menu's Quit: the quit decision, then the end of the main loop.
    void quit();
    // Files named by this launch of the program or a later one (absolute paths).
    void open(std::vector<std::string> paths);

    // What the page's messages do, filled once at start-up; other ways in (the desktop) call the same.
    const BridgeOperations& operations() const { return operations_; }
    AppDelegate& delegate() { return delegate_; }

    // $XDG_DATA_HOME/Tunelark/Tunelark.sqlite, its folder created when missing.
    static std::string storePath();

private:
    void installMenu();
    [[noreturn]] void endProcess(int status);

    GtkApplication* application_;
    GlibMainQueue queue_;
    Store store_;
    DesktopClipboard clipboard_;
    DesktopUrlOpener urlOpener_;
    GdkScreens screens_;
    PageFolder pageFolder_;
    WkWebViewWithMouseEvent webView_;
    GtkMainWindow window_;
    GtkDesktopLook desktopLook_;
    ColorSchemeFollower colorScheme_;
    GtkDialogs dialogs_;
    PosixFileTree fileTree_;
    GtkHeaderProgress addProgress_;
    NavigationPolicy navigation_;
    PageState pageState_;
    MainVC mainVC_;
    PlayList playList_;
    MainWC mainWC_;
    PulseOutputDevice outputDevice_;
    GstAudioPlayerFactory players_;
    ObservedAudioPlayerFactory observedPlayers_{players_};  // what the engine opens, seen by the desktop
    PlayerHolder engine_;
    PlayListEditor editor_;
    AddFiles addFiles_;
    LyricsWindowSwitch lyricsWindow_;
    PreferencesOpener preferences_;
    OutputDeviceWatch outputDeviceWatch_;
    AppDelegate delegate_;
    BridgeOperations operations_;
    std::unique_ptr<GtkAppMenu> menu_;
    std::unique_ptr<DesktopIntegration> desktop_;
};

}  // namespace tunelark
