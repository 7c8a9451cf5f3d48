#pragma once
#include <gtk/gtk.h>

namespace tunelark {

// GTK runs the menu's accelerators (Ctrl+Q, Ctrl+S, Ctrl+comma) only in windows that belong to the
// application: a window of ours outside it would swallow them while it has the keyboard focus, as the
// lyrics window does right after it is shown. Without a running application (in tests) nothing changes.
inline void joinRunningApplication(GtkWindow* window) {
    GApplication* application = g_application_get_default();
    if (application != nullptr && GTK_IS_APPLICATION(application)) {
        gtk_window_set_application(window, GTK_APPLICATION(application));
    }
}

}  // namespace tunelark
