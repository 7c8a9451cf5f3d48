// Test support: a small window that drags the files named on its command line as a list of file URIs,
// as a file manager does. Press in the window, move the pointer onto the target and release there.
// Usage: tl-drag-source FILE...   (absolute paths)
#include <gtk/gtk.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> uris;

void dataGet(GtkWidget*, GdkDragContext*, GtkSelectionData* selection, guint, guint, gpointer) {
    std::vector<gchar*> list;
    for (auto& uri : uris) list.push_back(uri.data());
    list.push_back(nullptr);
    gtk_selection_data_set_uris(selection, list.data());
}

void dragEnded(GtkWidget*, GdkDragContext*, gpointer) {
    g_print("drag ended\n");
}

}  // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    for (int i = 1; i < argc; ++i) {
        gchar* uri = g_filename_to_uri(argv[i], nullptr, nullptr);
        if (uri) uris.emplace_back(uri);
        g_free(uri);
    }
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "tl-drag-source");
    gtk_window_set_default_size(GTK_WINDOW(window), 160, 120);
    gtk_window_move(GTK_WINDOW(window), 0, 0);
    GtkWidget* box = gtk_event_box_new();
    gtk_container_add(GTK_CONTAINER(box), gtk_label_new("files"));
    gtk_container_add(GTK_CONTAINER(window), box);
    GtkTargetEntry target{const_cast<gchar*>("text/uri-list"), 0, 0};
    gtk_drag_source_set(box, GDK_BUTTON1_MASK, &target, 1, GDK_ACTION_COPY);
    g_signal_connect(box, "drag-data-get", G_CALLBACK(dataGet), nullptr);
    g_signal_connect(box, "drag-end", G_CALLBACK(dragEnded), nullptr);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    gtk_widget_show_all(window);
    gtk_main();
    return 0;
}
