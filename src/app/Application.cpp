#include "app/Application.h"

#include "bridge/HandlerTable.h"
#include "bridge/PageOperations.h"
#include "lyrics_window/LyricsVC.h"
#include "platform/Localized.h"
#include "platform/glib/AppInfoFile.h"
#include "platform/gtk/GtkLyricsWindow.h"
#include "platform/gtk/GtkPreferencesWindow.h"
#include "platform/gtk/GtkSupportWindow.h"

#include <glib.h>
#include <gtk/gtk.h>

#include <cstdio>
#include <cstdlib>

namespace tunelark {

std::string Application::storePath() {
    const std::string folder = std::string(g_get_user_data_dir()) + "/Tunelark";
    g_mkdir_with_parents(folder.c_str(), 0700);
    return folder + "/Tunelark.sqlite";
}

Application::Application(GtkApplication* application, const PageResources& resources)
    : application_(application),
      store_(storePath(), queue_),
      pageFolder_(resources.pageFolder),
      webView_(WkWebViewWithMouseEvent::Callbacks{
          [this](const std::string& path) -> std::optional<std::string> {
              auto file = pageFolder_.resolve(path);
              return file ? std::optional<std::string>(file->string()) : std::nullopt;
          },
          [this](const NavigationAction& action) { return navigation_.decide(action); },
          [this] { navigation_.navigationFinished(); },
          [this](const std::string& reason) { mainWC_.pageProcessEnded(reason); }}),
      window_(application, webView_),
      colorScheme_(desktopLook_, webView_, readLightStyle(pageFolder_)),
      dialogs_([this] { return window_.gtkWindow(); }),
      addProgress_(window_.headerBar()),
      navigation_(webView_, urlOpener_, readQueriesSchemes(resources.appInfo.string())),
      mainVC_(queue_, &webView_, pageState_),
      playList_(store_, queue_, mainVC_),
      mainWC_(window_, screens_, pageState_, playList_, [this](int status) { endProcess(status); }),
      engine_(PlayerDeps{queue_, mainVC_, store_, dialogs_, observedPlayers_, outputDevice_}),
      editor_(store_, queue_, mainVC_, playList_, engine_),
      addFiles_(store_, dialogs_, queue_, [this] { playList_.sendPlayList(); }, fileTree_, addProgress_),
      lyricsWindow_([] { return std::make_unique<GtkLyricsWindow>(); }, store_, pageState_,
                    [this] { mainWC_.showWindow(); }),
      preferences_([this] { return std::make_unique<GtkPreferencesWindow>(window_.gtkWindow()); }, store_, queue_),
      outputDeviceWatch_(engine_, outputDevice_),
      delegate_(AppDelegate::Deps{store_, dialogs_, queue_, outputDeviceWatch_, preferences_,
                                  [this](const SupportWindowContent& content) {
                                      return std::make_unique<GtkSupportWindow>(content, window_.gtkWindow());
                                  }}),
      operations_(pageOperations(
          OperationTargets{mainWC_, dialogs_, clipboard_, addFiles_, editor_, engine_, lyricsWindow_})) {
    engine_.seams().setLyricText = [](const std::string& text) { setSharedLyricText(text); };
    engine_.seams().mainWindowVisible = [this] { return window_.isVisible(); };
    engine_.seams().outputDeviceRecorded = [this] { outputDeviceWatch_.wake(); };
    playList_.setLyricsWindowShown([this] { return lyricsWindow_.isShown(); });
    window_.setOnCloseRequest([this] { mainWC_.windowShouldClose(); });
    installMenu();
    registerHandlers(webView_, queue_, operations_);
    desktop_ = std::make_unique<DesktopIntegration>(DesktopIntegration::Deps{
        queue_, engine_, pageState_, operations_, addFiles_, observedPlayers_, webView_.widget(), [this] { reopen(); },
        [this] { quit(); }});
    webView_.loadPage();
    delegate_.applicationDidFinishLaunching();
}

Application::~Application() {
    // Desktop callbacks may still arrive while the members go; none must reach a half-destroyed program.
    desktop_.reset();
    menu_.reset();
}

void Application::reopen() { delegate_.applicationShouldHandleReopen(); }

void Application::quit() {
    if (delegate_.applicationShouldTerminate() == AppDelegate::TerminateReply::cancel) return;
    delegate_.applicationWillTerminate();
    g_application_quit(G_APPLICATION(application_));
}

void Application::open(std::vector<std::string> paths) { desktop_->open(std::move(paths)); }

void Application::endProcess(int status) {
    // Changes are saved by a queued task after each edit; one still waiting must not be lost.
    if (store_.hasChanges()) store_.saveNow();
    std::fflush(stdout);
    std::exit(status);
}

void Application::installMenu() {
    menu_ = std::make_unique<GtkAppMenu>(
        application_,
        std::vector<std::vector<AppMenuItem>>{
            {
                {"show-main-window", localized("Main Window"), "", [this] { delegate_.showMainWindow(); }},
                {"preferences", localized("_Preferences"), "<Primary>comma",
                 [this] { delegate_.clickedMenuPreference(); }},
                {"save", localized("_Save"), "<Primary>s", [this] { delegate_.saveAction(); }},
            },
            {
                {"support", localized("Support Tunelark"), "", [this] { delegate_.clickedSponsor(); }},
            },
            {
                {"quit", localized("_Quit"), "<Primary>q", [this] { quit(); }},
            },
        });
    window_.setPrimaryMenu(menu_->model());
}

}  // namespace tunelark
