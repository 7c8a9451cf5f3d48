#include "platform/gtk/GtkSupportWindow.h"

#include "platform/glib/GuardedCall.h"
#include "platform/gtk/JoinApplication.h"

#include <gtk/gtk.h>

namespace tunelark {

struct GtkSupportWindowSignals {
    // The window manager's close button hides it; the owner decides when it goes.
    static gboolean deleted(GtkWidget*, GdkEvent*, gpointer data) noexcept {
        guardedCall("support window close", [&] { static_cast<GtkSupportWindow*>(data)->close(); });
        return TRUE;
    }
    static void closeClicked(GtkButton*, gpointer data) noexcept {
        guardedCall("support window button", [&] { static_cast<GtkSupportWindow*>(data)->close(); });
    }
};

GtkSupportWindow::GtkSupportWindow(const SupportWindowContent& content, GtkWindow* parent)
    : window_(GObjectPtr<GtkWidget>::retain(gtk_window_new(GTK_WINDOW_TOPLEVEL))) {
    GtkWindow* window = GTK_WINDOW(window_.get());
    gtk_window_set_title(window, content.title.c_str());
    joinRunningApplication(window);
    gtk_window_set_resizable(window, FALSE);
    gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_DIALOG);
    if (parent) {
        gtk_window_set_transient_for(window, parent);
        gtk_window_set_position(window, GTK_WIN_POS_CENTER_ON_PARENT);
    } else {
        gtk_window_set_position(window, GTK_WIN_POS_CENTER);
    }

    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_container_set_border_width(GTK_CONTAINER(box), 24);

    GtkWidget* icon = gtk_image_new_from_icon_name("emblem-favorite", GTK_ICON_SIZE_DIALOG);
    gtk_box_pack_start(GTK_BOX(box), icon, FALSE, FALSE, 0);

    GtkWidget* heading = gtk_label_new(nullptr);
    char* markup = g_markup_printf_escaped("<span size='x-large' weight='bold'>%s</span>", content.heading.c_str());
    gtk_label_set_markup(GTK_LABEL(heading), markup);
    g_free(markup);
    gtk_box_pack_start(GTK_BOX(box), heading, FALSE, FALSE, 0);

    GtkWidget* body = gtk_label_new(content.body.c_str());
    gtk_label_set_line_wrap(GTK_LABEL(body), TRUE);
    gtk_label_set_max_width_chars(GTK_LABEL(body), 44);
    gtk_label_set_justify(GTK_LABEL(body), GTK_JUSTIFY_CENTER);
    gtk_box_pack_start(GTK_BOX(box), body, FALSE, FALSE, 0);

    GtkWidget* button = gtk_button_new_with_label(content.closeButton.c_str());
    gtk_widget_set_halign(button, GTK_ALIGN_CENTER);
    gtk_widget_set_margin_top(button, 6);
    gtk_box_pack_start(GTK_BOX(box), button, FALSE, FALSE, 0);

    gtk_container_add(GTK_CONTAINER(window), box);
    gtk_widget_show_all(box);

    connections_.emplace_back(window_.get(), "delete-event", G_CALLBACK(GtkSupportWindowSignals::deleted), this);
    connections_.emplace_back(button, "clicked", G_CALLBACK(GtkSupportWindowSignals::closeClicked), this);
}

GtkSupportWindow::~GtkSupportWindow() {
    connections_.clear();
    if (window_) gtk_widget_destroy(window_.get());
}

void GtkSupportWindow::show() {
    if (window_) gtk_window_present(GTK_WINDOW(window_.get()));
}

void GtkSupportWindow::close() {
    if (window_) gtk_widget_hide(window_.get());
}

}  // namespace tunelark
