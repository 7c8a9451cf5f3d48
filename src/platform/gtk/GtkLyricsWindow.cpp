#include "platform/gtk/GtkLyricsWindow.h"

#include "platform/glib/GuardedCall.h"
#include "platform/gtk/JoinApplication.h"
#include "platform/gtk/ScreenCoordinates.h"

#include <algorithm>
#include <cmath>

namespace tunelark {
namespace {

constexpr double kInitialWidth = 480;
constexpr double kInitialHeight = 40;
// The window starts centred above the bottom of the work area by this share of its height.
constexpr double kInitialLift = 0.12;
constexpr double kSmallestFont = 1;
constexpr double kLargestFont = 1000;

// CSS numbers must use a point whatever the locale says.
std::string cssNumber(double value) {
    char buffer[G_ASCII_DTOSTR_BUF_SIZE];
    return g_ascii_formatd(buffer, sizeof buffer, "%.4f", value);
}

std::string cssColor(const Rgba& color) {
    return "rgba(" + cssNumber(color.red * 255) + "," + cssNumber(color.green * 255) + "," +
           cssNumber(color.blue * 255) + "," + cssNumber(color.alpha) + ")";
}

Rect toRect(const GdkRectangle& r) { return {double(r.x), double(r.y), double(r.width), double(r.height)}; }

}  // namespace

GtkLyricsWindow::GtkLyricsWindow() : css_(GObjectPtr<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    buildWidgets();
    shape_.emplace(window_, label_);
    hover_.emplace(window_, [this](bool entered) { pointerCrossedBox(entered); });
    connectSignals();
    applyFontSize();
    applyCss();
    // Until the first text the window is a fixed strip, centred low on the main monitor's work area.
    Rect work{0, 0, kInitialWidth, kInitialHeight};
    if (GdkMonitor* monitor = mainMonitor()) {
        GdkRectangle area;
        gdk_monitor_get_workarea(monitor, &area);
        work = flipFrame(toRect(area), mainScreenBottom());
    }
    frame_ = {work.x + (work.width - kInitialWidth) / 2, work.y + work.height * kInitialLift, kInitialWidth,
              kInitialHeight};
    applyFrame();
}

GtkLyricsWindow::~GtkLyricsWindow() {
    events_ = nullptr;
    delegate_ = nullptr;
    if (window_ != nullptr) gtk_widget_destroy(window_);
}

void GtkLyricsWindow::buildWidgets() {
    window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWindow* window = GTK_WINDOW(window_);
    gtk_window_set_title(window, "Lyrics");
    joinRunningApplication(window);
    gtk_window_set_decorated(window, FALSE);
    gtk_window_set_keep_above(window, TRUE);
    gtk_window_set_skip_taskbar_hint(window, TRUE);
    gtk_window_set_skip_pager_hint(window, TRUE);
    // A utility window stays above ordinary ones with keep-above and can still take the focus, which
    // ends a drag when it is lost.
    gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_UTILITY);
    gtk_window_set_accept_focus(window, TRUE);
    GdkVisual* rgba = gdk_screen_get_rgba_visual(gtk_widget_get_screen(window_));
    if (rgba != nullptr) gtk_widget_set_visual(window_, rgba);
    gtk_widget_set_app_paintable(window_, TRUE);

    eventBox_ = gtk_event_box_new();
    gtk_event_box_set_visible_window(GTK_EVENT_BOX(eventBox_), FALSE);
    gtk_widget_add_events(eventBox_, GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK | GDK_BUTTON1_MOTION_MASK |
                                         GDK_ENTER_NOTIFY_MASK | GDK_LEAVE_NOTIFY_MASK);
    label_ = gtk_label_new("");
    gtk_label_set_justify(GTK_LABEL(label_), GTK_JUSTIFY_CENTER);
    gtk_label_set_line_wrap(GTK_LABEL(label_), FALSE);
    gtk_label_set_selectable(GTK_LABEL(label_), FALSE);
    gtk_container_add(GTK_CONTAINER(eventBox_), label_);
    gtk_container_add(GTK_CONTAINER(window_), eventBox_);

    GtkStyleProvider* provider = GTK_STYLE_PROVIDER(css_.get());
    for (GtkWidget* widget : {window_, label_}) {
        GtkStyleContext* context = gtk_widget_get_style_context(widget);
        gtk_style_context_add_class(context, "tunelark-lyrics");
        gtk_style_context_add_provider(context, provider, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    }
    gtk_widget_show_all(eventBox_);
}

void GtkLyricsWindow::connectSignals() {
    g_signal_connect(window_, "draw", G_CALLBACK(onDraw), this);
    g_signal_connect(window_, "focus-out-event", G_CALLBACK(onFocusOut), this);
    g_signal_connect(window_, "delete-event", G_CALLBACK(onDelete), this);
    g_signal_connect(eventBox_, "button-press-event", G_CALLBACK(onButtonPress), this);
    g_signal_connect(eventBox_, "motion-notify-event", G_CALLBACK(onMotion), this);
    g_signal_connect(eventBox_, "button-release-event", G_CALLBACK(onButtonRelease), this);
    g_signal_connect(eventBox_, "enter-notify-event", G_CALLBACK(onCrossing), this);
    g_signal_connect(eventBox_, "leave-notify-event", G_CALLBACK(onCrossing), this);
}

GdkMonitor* GtkLyricsWindow::mainMonitor() const {
    GdkDisplay* display = gtk_widget_get_display(window_);
    GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
    return monitor != nullptr ? monitor : gdk_display_get_monitor(display, 0);
}

double GtkLyricsWindow::mainScreenBottom() const {
    GdkMonitor* monitor = mainMonitor();
    if (monitor == nullptr) return 0;
    GdkRectangle geometry;
    gdk_monitor_get_geometry(monitor, &geometry);
    return geometry.y + geometry.height;
}

void GtkLyricsWindow::setFrame(const Rect& frame) {
    if (frame == frame_) return;
    frame_ = frame;
    applyFrame();
}

void GtkLyricsWindow::applyFrame() {
    Rect root = flipFrame(frame_, mainScreenBottom());
    gtk_window_move(GTK_WINDOW(window_), int(std::lround(root.x)), int(std::lround(root.y)));
    gtk_window_resize(GTK_WINDOW(window_), std::max(1, int(std::lround(root.width))),
                      std::max(1, int(std::lround(root.height))));
}

void GtkLyricsWindow::show() {
    // Mapping again may let the window manager choose a place; ours is set again first.
    if (!gtk_widget_get_visible(window_)) applyFrame();
    gtk_widget_show(window_);
    gtk_window_present(GTK_WINDOW(window_));
}

void GtkLyricsWindow::hide() {
    pressed_ = false;
    hover_->reset();
    pointerInBox_ = false;
    showBackground();
    gtk_widget_hide(window_);
}

bool GtkLyricsWindow::isVisible() const { return gtk_widget_get_visible(window_); }

void GtkLyricsWindow::setText(const std::string& text) {
    if (text == text_) return;
    text_ = text;
    natural_.reset();
    shape_->contentChanged(text_.empty());
    if (g_utf8_validate(text.data(), gssize(text.size()), nullptr)) {
        gtk_label_set_text(GTK_LABEL(label_), text.c_str());
    } else {
        gchar* valid = g_utf8_make_valid(text.data(), gssize(text.size()));
        gtk_label_set_text(GTK_LABEL(label_), valid);
        g_free(valid);
    }
}

void GtkLyricsWindow::setFontSize(double points) {
    if (points == fontSize_) return;
    fontSize_ = points;
    natural_.reset();
    shape_->contentChanged(text_.empty());
    applyFontSize();
}

// The size goes in as a label attribute, not CSS: a new CSS font reaches the label's layout only at the
// next frame, so the natural size measured right after the change would still be the old one.
void GtkLyricsWindow::applyFontSize() {
    // Stored sizes are not checked; keep what reaches Pango to something it can lay out.
    double pixels = std::isfinite(fontSize_) ? std::clamp(fontSize_, kSmallestFont, kLargestFont) : kSmallestFont;
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_size_new_absolute(int(std::lround(pixels * PANGO_SCALE))));
    gtk_label_set_attributes(GTK_LABEL(label_), attributes);
    pango_attr_list_unref(attributes);
}

void GtkLyricsWindow::setTextColor(const Rgba& color) {
    if (color == style_.color) return;
    style_.color = color;
    applyCss();
}

void GtkLyricsWindow::setTextBackground(const Rgba& color) {
    requestedBackground_ = color;
    showBackground();
}

// Cut to its glyphs, the window takes the pointer only on them (X gives input only where a window
// shows), too thin to press by hand. So while the pointer is in the box there, the background its entry
// showed is held, keeping the whole box pressable, though each tick asks for a transparent one.
void GtkLyricsWindow::showBackground() {
    bool hold = pointerInBox_ && shape_->shaping() && requestedBackground_.alpha == 0;
    Rgba shown = hold ? heldBackground_ : requestedBackground_;
    if (shown == style_.background) return;
    style_.background = shown;
    shape_->contentChanged(text_.empty());
    applyCss();
}

void GtkLyricsWindow::pointerCrossedBox(bool entered) {
    pointerInBox_ = entered;
    if (events_ != nullptr) {
        if (entered)
            events_->mouseEntered();
        else
            events_->mouseExited();
    }
    if (entered) heldBackground_ = requestedBackground_;
    showBackground();
}

void GtkLyricsWindow::applyCss() {
    // The padding keeps the grey background clear of the glyphs; the shadow keeps light text readable
    // on a light desktop.
    std::string css = "window.tunelark-lyrics { background-color: transparent; }\n"
                      "label.tunelark-lyrics { color: " + cssColor(style_.color) +
                      "; background-color: " + cssColor(style_.background) +
                      "; padding: 2px 10px; border-radius: 6px; text-shadow: 0 1px 2px rgba(0,0,0,0.45); }\n";
    gtk_css_provider_load_from_data(css_.get(), css.c_str(), gssize(css.size()), nullptr);
}

LabelSize GtkLyricsWindow::naturalTextSize() {
    if (!natural_) {
        GtkRequisition natural{};
        gtk_widget_get_preferred_size(label_, nullptr, &natural);
        natural_ = LabelSize{double(natural.width), double(natural.height)};
    }
    return *natural_;
}

gboolean GtkLyricsWindow::onDraw(GtkWidget*, cairo_t* cr, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window draw", gboolean(FALSE), [&]() -> gboolean {
        // Clear to transparent; the label paints its own background on top, except for the empty
        // text, which shows nothing at all (not even the grey box).
        cairo_save(cr);
        cairo_set_source_rgba(cr, 0, 0, 0, 0);
        cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
        cairo_paint(cr);
        cairo_restore(cr);
        return self->text_.empty() ? TRUE : FALSE;
    });
}

gboolean GtkLyricsWindow::onButtonPress(GtkWidget*, GdkEventButton* event, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window press", gboolean(TRUE), [&]() -> gboolean {
        // Double presses are told apart by the core from the times, so GTK's own double-press events
        // are not passed on.
        if (event->type != GDK_BUTTON_PRESS || event->button != GDK_BUTTON_PRIMARY) return TRUE;
        self->pressed_ = true;
        self->lastRootX_ = event->x_root;
        self->lastRootY_ = event->y_root;
        if (self->events_ != nullptr) self->events_->mouseDown(double(g_get_real_time()) / G_USEC_PER_SEC);
        return TRUE;
    });
}

gboolean GtkLyricsWindow::onMotion(GtkWidget*, GdkEventMotion* event, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window drag", gboolean(TRUE), [&]() -> gboolean {
        if (!self->pressed_) return TRUE;
        double deltaX = event->x_root - self->lastRootX_;
        double deltaY = event->y_root - self->lastRootY_;
        self->lastRootX_ = event->x_root;
        self->lastRootY_ = event->y_root;
        if ((deltaX != 0 || deltaY != 0) && self->events_ != nullptr) self->events_->mouseDragged(deltaX, deltaY);
        return TRUE;
    });
}

gboolean GtkLyricsWindow::onButtonRelease(GtkWidget*, GdkEventButton* event, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window release", gboolean(TRUE), [&]() -> gboolean {
        if (event->button != GDK_BUTTON_PRIMARY) return TRUE;
        self->pressed_ = false;
        if (self->events_ != nullptr) self->events_->mouseUp();
        return TRUE;
    });
}

gboolean GtkLyricsWindow::onCrossing(GtkWidget*, GdkEventCrossing* event, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window hover", gboolean(TRUE), [&]() -> gboolean {
        // Crossings into or out of the box's own child windows are not the pointer coming or going.
        if (event->detail == GDK_NOTIFY_INFERIOR) return FALSE;
        self->hover_->crossed(event->type == GDK_ENTER_NOTIFY, event->x_root, event->y_root);
        return FALSE;
    });
}

gboolean GtkLyricsWindow::onFocusOut(GtkWidget*, GdkEventFocus*, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window focus", gboolean(TRUE), [&]() -> gboolean {
        if (self->delegate_ != nullptr) self->delegate_->windowDidResignKey();
        return FALSE;
    });
}

gboolean GtkLyricsWindow::onDelete(GtkWidget*, GdkEvent*, gpointer data) noexcept {
    auto* self = static_cast<GtkLyricsWindow*>(data);
    return guardedCall("lyrics window close", gboolean(TRUE), [&]() -> gboolean {
        if (self->delegate_ != nullptr && self->delegate_->windowShouldClose()) self->hide();
        // Never destroyed: the controllers keep this window until the application quits.
        return TRUE;
    });
}

}  // namespace tunelark
