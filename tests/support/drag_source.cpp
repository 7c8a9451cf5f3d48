// tl-drag-source FILE...: a window at the top left that drags the files as a list of URIs, as a file
// manager does; it prints "drag ended" when the drop is over.
#include <gtk/gtk.h>

#include <vector>

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    static std::vector<gchar*> uris;  // null-terminated, alive as long as the program
    for (int i = 1; i < argc; ++i) uris.push_back(g_filename_to_uri(argv[i], nullptr, nullptr));
    uris.push_back(nullptr);
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "tl-drag-source");
    gtk_window_set_default_size(GTK_WINDOW(window), 160, 120);
    GtkWidget* box = gtk_event_box_new();
    gtk_container_add(GTK_CONTAINER(box), gtk_label_new("files"));
    gtk_container_add(GTK_CONTAINER(window), box);
    GtkTargetEntry target{const_cast<gchar*>("text/uri-list"), 0, 0};
    gtk_drag_source_set(box, GDK_BUTTON1_MASK, &target, 1, GDK_ACTION_COPY);
    g_signal_connect(box, "drag-data-get", G_CALLBACK(+[](GtkWidget*, GdkDragContext*, GtkSelectionData* data, guint,
                                                         guint, gpointer) { gtk_selection_data_set_uris(data, uris.data()); }),
                     nullptr);
    g_signal_connect(box, "drag-end", G_CALLBACK(+[](GtkWidget*, GdkDragContext*, gpointer) { g_print("drag ended\n"); }),
                     nullptr);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    gtk_widget_show_all(window);
    gtk_main();
}
