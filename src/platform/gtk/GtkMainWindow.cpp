#include "platform/gtk/GtkMainWindow.h"

#include "platform/glib/GuardedCall.h"
#include "platform/gtk/GdkScreens.h"
#include "platform/gtk/ScreenCoordinates.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/gdkx.h>
#endif

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
    static gboolean stateChanged(GtkWidget*, GdkEventWindowState* event, gpointer data) noexcept {
        const GdkWindowState state = event->new_window_state;
        static_cast<GtkMainWindow*>(data)->stateChanged((state & GDK_WINDOW_STATE_ICONIFIED) != 0,
                                                       (state & GDK_WINDOW_STATE_MAXIMIZED) != 0);
        return FALSE;
    }
    static void shownOrHidden(GtkWidget*, gpointer data) noexcept { static_cast<GtkMainWindow*>(data)->sightChanged(); }
    static void allocated(GtkWidget*, GdkRectangle*, gpointer data) noexcept {
        static_cast<GtkMainWindow*>(data)->laidOut();
    }
    // Only X without a compositor tells; a composited window always counts as uncovered.
    static gboolean visibilityChanged(GtkWidget*, GdkEventVisibility* event, gpointer data) noexcept {
        auto* window = static_cast<GtkMainWindow*>(data);
        window->fullyObscured_ = event->state == GDK_VISIBILITY_FULLY_OBSCURED;
        window->sightChanged();
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
    connections_.emplace_back(window, "window-state-event", G_CALLBACK(&S::stateChanged), this);
    connections_.emplace_back(window, "size-allocate", G_CALLBACK(&S::allocated), this);
    gtk_widget_add_events(window_.get(), GDK_VISIBILITY_NOTIFY_MASK);
    connections_.emplace_back(window, "visibility-notify-event", G_CALLBACK(&S::visibilityChanged), this);
    connections_.emplace_back(window, "show", G_CALLBACK(&S::shownOrHidden), this);
    connections_.emplace_back(window, "hide", G_CALLBACK(&S::shownOrHidden), this);
    sightChanged();
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
    if (maximized_) {
        unmaximize(frame);  // a maximised window would keep its size
        return;
    }
    // Kept as requested: the window manager confirms later, and a second request must see the first.
    gtkFrame_ = flipFrame(frame, GdkScreens::mainScreenBottom());
    GtkWindow* window = gtkWindow();
    gtk_window_move(window, int(std::lround(gtkFrame_.x)), int(std::lround(gtkFrame_.y)));
    gtk_window_resize(window, std::max(1, int(std::lround(gtkFrame_.width))),
                      std::max(1, int(std::lround(gtkFrame_.height - titleBarHeight()))));
}

void GtkMainWindow::setMinimumSize(double width, double height) {
    // On the page rather than as window hints: GTK hands hints to X without the title bar's share.
    gtk_widget_set_size_request(webView_.widget(), int(std::lround(width)),
                                std::max(0, int(std::lround(height - titleBarHeight()))));
}

bool GtkMainWindow::isVisible() const {
    // GTK keeps a minimised window "visible"; only the window state tells it is out of sight.
    return gtk_widget_get_visible(window_.get()) && !iconified_ && !fullyObscured_;
}

void GtkMainWindow::show() {
    everShown_ = true;
    gtk_widget_show(window_.get());
    gtk_window_present(gtkWindow());
}

void GtkMainWindow::hide() { gtk_widget_hide(window_.get()); }

bool GtkMainWindow::beginDragFromLastPress() {
    if (!isVisible()) return false;
    return webView_.moveWhenDragged([this](const GdkEvent* press, std::uint32_t time) {
        guint button = 1;
        gdouble x = 0;
        gdouble y = 0;
        gdk_event_get_button(press, &button);
        gdk_event_get_root_coords(press, &x, &y);
        // From the press's place, so that the point pressed stays under the pointer.
        gtk_window_begin_move_drag(gtkWindow(), int(button), int(x), int(y), time);
    });
}

bool GtkMainWindow::windowManagerMaximizes() const {
#ifdef GDK_WINDOWING_X11
    GdkScreen* screen = gtk_widget_get_screen(window_.get());
    if (GDK_IS_X11_SCREEN(screen)) {
        GdkAtom maximizedVert = gdk_atom_intern_static_string("_NET_WM_STATE_MAXIMIZED_VERT");
        return gdk_x11_screen_supports_net_wm_hint(screen, maximizedVert);
    }
#endif
    return true;  // other backends always run a compositor that maximises
}

bool GtkMainWindow::isMaximized() const { return maximized_; }

void GtkMainWindow::maximize() {
    pendingRestore_.reset();
    gtk_window_maximize(gtkWindow());
}

void GtkMainWindow::unmaximize(const Rect& restored) {
    if (!maximized_) {
        setFrame(restored);
        return;
    }
    // Applied once the window manager reports the change: before it, it would keep or override the size.
    pendingRestore_ = restored;
    gtk_window_unmaximize(gtkWindow());
}

void GtkMainWindow::sightChanged() { webView_.setInSight(isVisible()); }

void GtkMainWindow::stateChanged(bool iconified, bool maximized) {
    iconified_ = iconified;
    sightChanged();
    const bool unmaximized = maximized_ && !maximized;
    maximized_ = maximized;
    // Other changes (focus among them) come between the report and the layout; they keep the request.
    if (unmaximized && pendingRestore_) restoreOnLayout_ = true;
}

void GtkMainWindow::laidOut() {
    // Only now does GTK know the shadows of an unmaximised window, which it adds around a move.
    if (!std::exchange(restoreOnLayout_, false) || maximized_ || !pendingRestore_) return;
    setFrame(*std::exchange(pendingRestore_, std::nullopt));
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
