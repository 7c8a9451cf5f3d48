#include "platform/gtk/FileDropTarget.h"

#include "platform/glib/GuardedCall.h"

#include <gtk/gtk.h>

namespace tunelark {

namespace {

constexpr const char* kUriList = "text/uri-list";

// A drag from another program that offers a list of files.
bool fromOutside(GdkDragContext* context) {
    if (gtk_drag_get_source_widget(context) != nullptr) return false;
    const GdkAtom uriList = gdk_atom_intern_static_string(kUriList);
    for (GList* target = gdk_drag_context_list_targets(context); target; target = target->next) {
        if (GDK_POINTER_TO_ATOM(target->data) == uriList) return true;
    }
    return false;
}

std::vector<std::string> localPaths(GtkSelectionData* data) {
    std::vector<std::string> paths;
    gchar** uris = gtk_selection_data_get_uris(data);
    for (gchar** uri = uris; uri && *uri; ++uri) {
        // Only files of this machine; other URIs (http:, a remote host) are left out.
        if (gchar* path = g_filename_from_uri(*uri, nullptr, nullptr)) {
            paths.emplace_back(path);
            g_free(path);
        }
    }
    g_strfreev(uris);
    return paths;
}

}  // namespace

struct FileDropTargetSignals {
    static gboolean motion(GtkWidget*, GdkDragContext* context, gint, gint, guint time, gpointer) noexcept {
        if (!fromOutside(context)) return FALSE;
        gdk_drag_status(context, GDK_ACTION_COPY, time);
        return TRUE;
    }

    static void leave(GtkWidget* widget, GdkDragContext* context, guint, gpointer) noexcept {
        if (fromOutside(context)) g_signal_stop_emission_by_name(widget, "drag-leave");
    }

    static gboolean drop(GtkWidget* widget, GdkDragContext* context, gint, gint, guint time, gpointer data) noexcept {
        if (!fromOutside(context)) return FALSE;
        static_cast<FileDropTarget*>(data)->awaitingData_ = true;
        gtk_drag_get_data(widget, context, gdk_atom_intern_static_string(kUriList), time);
        return TRUE;
    }

    static void received(GtkWidget* widget, GdkDragContext* context, gint, gint, GtkSelectionData* selection, guint,
                         guint time, gpointer data) noexcept {
        auto* target = static_cast<FileDropTarget*>(data);
        if (!target->awaitingData_) return;
        target->awaitingData_ = false;
        g_signal_stop_emission_by_name(widget, "drag-data-received");
        std::vector<std::string> paths = localPaths(selection);
        gtk_drag_finish(context, !paths.empty(), FALSE, time);
        if (paths.empty() || !target->onFiles_) return;
        guardedCall("file drop", [&] { target->onFiles_(std::move(paths)); });
    }
};

FileDropTarget::FileDropTarget(GtkWidget* widget, std::function<void(std::vector<std::string>)> onFiles)
    : widget_(widget), onFiles_(std::move(onFiles)) {
    connections_.emplace_back(widget_, "drag-motion", G_CALLBACK(FileDropTargetSignals::motion), this);
    connections_.emplace_back(widget_, "drag-leave", G_CALLBACK(FileDropTargetSignals::leave), this);
    connections_.emplace_back(widget_, "drag-drop", G_CALLBACK(FileDropTargetSignals::drop), this);
    connections_.emplace_back(widget_, "drag-data-received", G_CALLBACK(FileDropTargetSignals::received), this);
}

}  // namespace tunelark
