#include "platform/gtk/GtkHeaderProgress.h"

#include "platform/Localized.h"
#include "platform/glib/GuardedCall.h"

#include <gtk/gtk.h>

namespace tunelark {

struct GtkHeaderProgressSignals {
    static void clicked(GtkButton*, gpointer data) noexcept {
        auto* self = static_cast<GtkHeaderProgress*>(data);
        // A copy: the callback may hide the indicator and replace its own callback.
        auto onCancel = self->onCancel_;
        if (onCancel) guardedCall("progress cancel", onCancel);
    }
};

GtkHeaderProgress::GtkHeaderProgress(GtkWidget* headerBar) {
    box_ = GObjectPtr<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8));
    spinner_ = gtk_spinner_new();
    label_ = gtk_label_new("");
    gtk_style_context_add_class(gtk_widget_get_style_context(label_), "dim-label");
    cancel_ = gtk_button_new_with_label(localized("Cancel").c_str());
    gtk_container_add(GTK_CONTAINER(box_.get()), spinner_);
    gtk_container_add(GTK_CONTAINER(box_.get()), label_);
    gtk_container_add(GTK_CONTAINER(box_.get()), cancel_);
    gtk_widget_show(spinner_);
    gtk_widget_show(label_);
    gtk_widget_show(cancel_);
    gtk_header_bar_pack_start(GTK_HEADER_BAR(headerBar), box_.get());
    clicked_ = SignalConnection(cancel_, "clicked", G_CALLBACK(&GtkHeaderProgressSignals::clicked), this);
}

GtkHeaderProgress::~GtkHeaderProgress() { clicked_.disconnect(); }

void GtkHeaderProgress::show(const std::string& text, std::function<void()> onCancel) {
    onCancel_ = std::move(onCancel);
    gtk_widget_set_sensitive(cancel_, onCancel_ != nullptr);
    gtk_label_set_text(GTK_LABEL(label_), text.c_str());
    gtk_spinner_start(GTK_SPINNER(spinner_));
    gtk_widget_show(box_.get());
}

void GtkHeaderProgress::hide() {
    gtk_spinner_stop(GTK_SPINNER(spinner_));
    gtk_widget_hide(box_.get());
    onCancel_ = {};
}

}  // namespace tunelark
