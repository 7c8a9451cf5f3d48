#pragma once
#include "bridge/MainVC.h"
#include "library/store/Store.h"
#include "main_window/MainWC.h"
#include "main_window/NavigationPolicy.h"
#include "main_window/PageFolder.h"
#include "main_window/PageResources.h"
#include "platform/glib/GlibMainQueue.h"
#include "platform/gtk/DesktopClipboard.h"
#include "platform/gtk/DesktopUrlOpener.h"
#include "platform/gtk/GdkScreens.h"
#include "platform/gtk/GtkDialogs.h"
#include "platform/gtk/GtkMainWindow.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"

#include <string>

typedef struct _GtkApplication GtkApplication;

namespace tunelark {

// The running program: the real platform parts wired into the core, in start-up order. Built once
// the toolkit has started; main thread only.
class Application {
public:
    Application(GtkApplication* application, const PageResources& resources);
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // A second launch of the program: bring the main window forward (once the page has sized it).
    void reopen();

    // $XDG_DATA_HOME/Tunelark/Tunelark.sqlite, its folder created when missing.
    static std::string storePath();

private:
    void registerBridge();
    [[noreturn]] void endProcess(int status);

    GlibMainQueue queue_;
    Store store_;
    DesktopClipboard clipboard_;
    DesktopUrlOpener urlOpener_;
    GdkScreens screens_;
    PageFolder pageFolder_;
    WkWebViewWithMouseEvent webView_;
    GtkMainWindow window_;
    GtkDialogs dialogs_;
    NavigationPolicy navigation_;
    MainVC mainVC_;
    MainWC mainWC_;
};

}  // namespace tunelark
