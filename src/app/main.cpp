#include "app/Application.h"
#include "desktop/CommandLine.h"
#include "main_window/PageResources.h"
#include "platform/Localized.h"
#include "platform/PageProcessTuning.h"
#include "platform/TextCatalog.h"
#include "platform/glib/GObjectHandles.h"

#include <glib.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Launch {
    tunelark::PageResources resources;
    std::unique_ptr<tunelark::Application> app;
};

void started(GtkApplication* application, gpointer data) noexcept {
    auto* launch = static_cast<Launch*>(data);
    try {
        launch->app = std::make_unique<tunelark::Application>(application, launch->resources);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tunelark: cannot start: %s\n", e.what());
        g_application_quit(G_APPLICATION(application));
    }
}

// At launch and again for each later launch of the program, which is the desktop's "reopen".
void activated(GtkApplication*, gpointer data) noexcept {
    auto* launch = static_cast<Launch*>(data);
    if (launch->app) launch->app->reopen();
}

// Files named by this launch or by a later one; only files of this machine can be added.
void opened(GApplication*, GFile** files, gint count, gchar*, gpointer data) noexcept {
    auto* launch = static_cast<Launch*>(data);
    if (!launch->app) return;
    std::vector<std::string> paths;
    for (gint i = 0; i < count; ++i) {
        if (gchar* path = g_file_get_path(files[i])) {
            paths.emplace_back(path);
            g_free(path);
        } else {
            tunelark::GCharPtr uri(g_file_get_uri(files[i]));
            std::fprintf(stderr, "tunelark: not a local file, left out: %s\n", uri.get());
        }
    }
    try {
        launch->app->open(std::move(paths));
        launch->app->reopen();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tunelark: cannot open the files: %s\n", e.what());
    }
}

// What the toolkit's own command-line handling gets: the program name and the files, each of which
// reads as a file name (a name that starts with "-" gets "./" before it).
std::vector<std::string> toolkitArguments(const char* program, const std::vector<std::string>& files) {
    std::vector<std::string> args{program};
    for (const auto& file : files) args.push_back(file.starts_with('-') ? "./" + file : file);
    return args;
}

}  // namespace

int main(int argc, char** argv) {
    tunelark::tunePageProcesses();
    std::error_code error;
    auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error && argc > 0) executable = argv[0];
    tunelark::setUpTranslations(executable);
    const std::vector<std::string> given(argv + std::min(argc, 1), argv + argc);
    const auto command = tunelark::parseCommandLine(given);
    switch (command.action) {
    case tunelark::CommandLine::Action::Help:
        std::fputs(tunelark::localized(tunelark::kTunelarkUsage).c_str(), stdout);
        return 0;
    case tunelark::CommandLine::Action::Version:
        std::printf("%s\n", tunelark::versionText().c_str());
        return 0;
    case tunelark::CommandLine::Action::Fail:
        std::fprintf(stderr, "tunelark: %s\n", command.error.c_str());
        return tunelark::kUsageStatus;
    case tunelark::CommandLine::Action::Run:
        break;
    }
    const auto search = tunelark::findPageResources(executable);
    if (!search.found) {
        std::fprintf(stderr, "%s\n", search.failureMessage().c_str());
        return 1;
    }
    // Keep-above and window placement, which the lyrics window needs, are ignored by Wayland compositors:
    // X11 (XWayland on a Wayland desktop) first, Wayland itself only where there is no X server. A
    // GDK_BACKEND the user set wins.
    g_setenv("GDK_BACKEND", "x11,wayland", FALSE);
    // Standard output carries the console lines; diagnostics go to standard error.
    g_log_writer_default_set_use_stderr(TRUE);

    Launch launch{*search.found, nullptr};
    GtkApplication* application = gtk_application_new("org.tunelark.Tunelark", G_APPLICATION_HANDLES_OPEN);
    g_signal_connect(application, "startup", G_CALLBACK(started), &launch);
    g_signal_connect(application, "activate", G_CALLBACK(activated), &launch);
    g_signal_connect(application, "open", G_CALLBACK(opened), &launch);
    std::vector<std::string> args = toolkitArguments(argc > 0 ? argv[0] : "tunelark", command.files);
    std::vector<char*> toolkitArgv;
    for (auto& arg : args) toolkitArgv.push_back(arg.data());
    toolkitArgv.push_back(nullptr);
    const int status =
        g_application_run(G_APPLICATION(application), static_cast<int>(args.size()), toolkitArgv.data());
    launch.app.reset();
    g_object_unref(application);
    return status;
}
