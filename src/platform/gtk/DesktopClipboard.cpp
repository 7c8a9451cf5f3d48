#include "platform/gtk/DesktopClipboard.h"

#include <gtk/gtk.h>

namespace tunelark {

void DesktopClipboard::setText(const std::string& text) {
    // Setting the text takes ownership of the selection, which drops whatever was there.
    gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD), text.data(), gint(text.size()));
}

}  // namespace tunelark
