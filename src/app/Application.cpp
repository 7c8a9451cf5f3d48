#include "app/Application.h"

#include "platform/glib/AppInfoFile.h"

#include <glib.h>

#include <cstdio>
#include <cstdlib>

namespace tunelark {

std::string Application::storePath() {
    const std::string folder = std::string(g_get_user_data_dir()) + "/Tunelark";
    g_mkdir_with_parents(folder.c_str(), 0700);
    return folder + "/Tunelark.sqlite";
}

Application::Application(GtkApplication* application, const PageResources& resources)
    : store_(storePath(), queue_),
      pageFolder_(resources.pageFolder),
      webView_(WkWebViewWithMouseEvent::Callbacks{
          [this](const std::string& path) -> std::optional<std::string> {
              auto file = pageFolder_.resolve(path);
              return file ? std::optional<std::string>(file->string()) : std::nullopt;
          },
          [this](const NavigationAction& action) { return navigation_.decide(action); },
          [this] { navigation_.navigationFinished(); }}),
      window_(application, webView_),
      dialogs_([this] { return window_.gtkWindow(); }),
      navigation_(webView_, urlOpener_, readQueriesSchemes(resources.appInfo.string())),
      mainVC_(queue_, &webView_),
      mainWC_(window_, screens_, [this](int status) { endProcess(status); }) {
    window_.setOnCloseRequest([this] { mainWC_.windowShouldClose(); });
    registerBridge();
    webView_.loadPage();
}

void Application::reopen() { mainWC_.showWindow(); }

void Application::endProcess(int status) {
    // Changes are saved by a queued task after each edit; one still waiting must not be lost.
    if (store_.hasChanges()) store_.saveNow();
    std::fflush(stdout);
    std::exit(status);
}

void Application::registerBridge() {
    // The bridge's handler table is wired here once it lands.
}

}  // namespace tunelark
