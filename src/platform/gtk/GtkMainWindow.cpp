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

namespace {

constexpr const char* kWindowName = "tunelark-main-window";

// Without a compositor GTK draws a 5-pixel border around client-side decorated windows, outside the size
// it was asked for, so the window would be larger than its frame. Our window goes without it; the
// window manager's own handles still resize it. Can go when the window no longer draws its title bar.
void dropSolidBorder(GtkWidget* window) {
    gtk_widget_set_name(window, kWindowName);
    auto css = GObjectPtr<GtkCssProvider>::adopt(gtk_css_provider_new());
    gtk_css_provider_load_from_data(
        css.get(), "window#tunelark-main-window.solid-csd decoration { margin: 0; padding: 0; border-width: 0; box-shadow: none; }",
        -1, nullptr);
    gtk_style_context_add_provider_for_screen(gtk_widget_get_screen(window), GTK_STYLE_PROVIDER(css.get()),
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

bool buttonStillDown(guint button) {
    if (button < 1 || button > 5) return false;
    GdkSeat* seat = gdk_display_get_default_seat(gdk_display_get_default());
    GdkDevice* pointer = seat ? gdk_seat_get_pointer(seat) : nullptr;
    if (!pointer) return false;
    GdkModifierType state{};
    gdk_window_get_device_position(gdk_get_default_root_window(), pointer, nullptr, nullptr, &state);
    return (state & (GDK_BUTTON1_MASK << (button - 1))) != 0;
}

}  // namespace

GtkMainWindow::GtkMainWindow(GtkApplication* application, WkWebViewWithMouseEvent& webView) : webView_(webView) {
    window_ = GObjectPtr<GtkWidget>::retain(gtk_application_window_new(application));
    GtkWindow* window = gtkWindow();
    dropSolidBorder(window_.get());
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

double GtkMainWindow::titleBarHeight() const {
    int natural = 0;
    gtk_widget_get_preferred_height(headerBar_, nullptr, &natural);
    return natural;
}

void GtkMainWindow::refreshFrame() {
    // GTK places the window by its title bar's corner but sizes only what lies below the title bar.
    int x = 0, y = 0, width = 0, height = 0;
    gtk_window_get_position(gtkWindow(), &x, &y);
    gtk_window_get_size(gtkWindow(), &width, &height);
    gtkFrame_ = Rect{double(x), double(y), double(width), height + titleBarHeight()};
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
                      std::max(1, int(std::lround(gtkFrame_.height - titleBarHeight()))));
}

void GtkMainWindow::setMinimumSize(double width, double height) {
    // On the page rather than as window hints: GTK hands hints to X without the title bar's share.
    gtk_widget_set_size_request(webView_.widget(), int(std::lround(width)),
                                std::max(0, int(std::lround(height - titleBarHeight()))));
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
    // The drag starts from a queued task; after a quick click the button is already up, and a move
    // started then would follow the pointer until the next click.
    if (!buttonStillDown(button)) return false;
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
