#include "app/Application.h"
#include "main_window/PageResources.h"

#include <glib.h>
#include <gtk/gtk.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

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

}  // namespace

int main(int argc, char** argv) {
    std::error_code error;
    auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error && argc > 0) executable = argv[0];
    const auto search = tunelark::findPageResources(executable);
    if (!search.found) {
        std::fprintf(stderr, "%s\n", search.failureMessage().c_str());
        return 1;
    }
    // Keep-above and window placement, which the lyrics window needs, are ignored by Wayland compositors.
    g_setenv("GDK_BACKEND", "x11", FALSE);
    // Standard output carries the console lines; diagnostics go to standard error.
    g_log_writer_default_set_use_stderr(TRUE);

    Launch launch{*search.found, nullptr};
    GtkApplication* application = gtk_application_new("org.tunelark.Tunelark", G_APPLICATION_DEFAULT_FLAGS);
    g_signal_connect(application, "startup", G_CALLBACK(started), &launch);
    g_signal_connect(application, "activate", G_CALLBACK(activated), &launch);
    const int status = g_application_run(G_APPLICATION(application), argc, argv);
    launch.app.reset();
    g_object_unref(application);
    return status;
}
