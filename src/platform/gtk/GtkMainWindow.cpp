#include "platform/gtk/GtkMainWindow.h"

#include "platform/glib/GuardedCall.h"
#include "platform/gtk/GdkScreens.h"
#include "platform/gtk/ScreenCoordinates.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tunelark {

struct GtkMainWindowSignals {
    static gboolean deleteRequested(GtkWidget*, GdkEvent*, gpointer data) noexcept {
        auto* self = static_cast<GtkMainWindow*>(data);
        if (self->onCloseRequest_) guardedCall("close request", self->onCloseRequest_);
        return TRUE;  // the callback decides; GTK must not destroy the window on its own
    }
    static gboolean configured(GtkWidget*, GdkEvent*, gpointer data) noexcept {
        static_cast<GtkMainWindow*>(data)->refreshFrame();
        return FALSE;
    }
};

GtkMainWindow::GtkMainWindow(GtkApplication* application, WkWebViewWithMouseEvent& webView) : webView_(webView) {
    window_ = GObjectPtr<GtkWidget>::retain(gtk_application_window_new(application));
    GtkWindow* window = gtkWindow();
    gtk_window_set_title(window, "Tunelark");
    gtk_window_set_default_size(window, 1200, 600);

    headerBar_ = gtk_header_bar_new();
    gtk_header_bar_set_title(GTK_HEADER_BAR(headerBar_), "Tunelark");
    gtk_header_bar_set_show_close_button(GTK_HEADER_BAR(headerBar_), TRUE);
    gtk_window_set_titlebar(window, headerBar_);
    gtk_widget_show(headerBar_);

    gtk_container_add(GTK_CONTAINER(window), webView_.widget());
    gtk_widget_show(webView_.widget());

    using S = GtkMainWindowSignals;
    connections_.emplace_back(window, "delete-event", G_CALLBACK(&S::deleteRequested), this);
    connections_.emplace_back(window, "configure-event", G_CALLBACK(&S::configured), this);
}

GtkMainWindow::~GtkMainWindow() {
    connections_.clear();
    gtk_widget_destroy(window_.get());
}

GtkWindow* GtkMainWindow::gtkWindow() const { return GTK_WINDOW(window_.get()); }

void GtkMainWindow::refreshFrame() {
    int x = 0, y = 0, width = 0, height = 0;
    gtk_window_get_position(gtkWindow(), &x, &y);
    gtk_window_get_size(gtkWindow(), &width, &height);
    gtkFrame_ = Rect{double(x), double(y), double(width), double(height)};
}

Rect GtkMainWindow::frame() const {
    if (!everShown_) return Rect{};
    return flipFrame(gtkFrame_, GdkScreens::mainScreenBottom());
}

void GtkMainWindow::setFrame(const Rect& frame) {
    // Kept as requested: the window manager confirms later, and a second request must see the first.
    gtkFrame_ = flipFrame(frame, GdkScreens::mainScreenBottom());
    GtkWindow* window = gtkWindow();
    if (gtk_window_is_maximized(window)) gtk_window_unmaximize(window);
    gtk_window_move(window, int(std::lround(gtkFrame_.x)), int(std::lround(gtkFrame_.y)));
    gtk_window_resize(window, std::max(1, int(std::lround(gtkFrame_.width))),
                      std::max(1, int(std::lround(gtkFrame_.height))));
}

void GtkMainWindow::setMinimumSize(double width, double height) {
    GdkGeometry hints{};
    hints.min_width = int(std::lround(width));
    hints.min_height = int(std::lround(height));
    gtk_window_set_geometry_hints(gtkWindow(), nullptr, &hints, GDK_HINT_MIN_SIZE);
}

bool GtkMainWindow::isVisible() const { return gtk_widget_get_visible(window_.get()); }

void GtkMainWindow::show() {
    everShown_ = true;
    gtk_widget_show(window_.get());
    gtk_window_present(gtkWindow());
}

void GtkMainWindow::hide() { gtk_widget_hide(window_.get()); }

bool GtkMainWindow::beginDragFromLastPress() {
    const GdkEvent* press = webView_.lastMouseDownEvent();
    if (!press || !isVisible()) return false;
    guint button = 1;
    gdouble x = 0;
    gdouble y = 0;
    gdk_event_get_button(press, &button);
    gdk_event_get_root_coords(press, &x, &y);
    gtk_window_begin_move_drag(gtkWindow(), int(button), int(x), int(y), gdk_event_get_time(press));
    return true;
}

void GtkMainWindow::setOnCloseRequest(std::function<void()> onCloseRequest) {
    onCloseRequest_ = std::move(onCloseRequest);
}

void GtkMainWindow::setPrimaryMenu(GMenuModel* menu) {
    if (!menuButton_) {
        menuButton_ = gtk_menu_button_new();
        gtk_button_set_image(GTK_BUTTON(menuButton_), gtk_image_new_from_icon_name("open-menu-symbolic", GTK_ICON_SIZE_BUTTON));
        gtk_header_bar_pack_end(GTK_HEADER_BAR(headerBar_), menuButton_);
        gtk_widget_show(menuButton_);
    }
    gtk_menu_button_set_menu_model(GTK_MENU_BUTTON(menuButton_), menu);
}

}  // namespace tunelark
