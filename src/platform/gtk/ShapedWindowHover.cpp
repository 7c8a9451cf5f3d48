#include "platform/gtk/ShapedWindowHover.h"

#include "platform/glib/GuardedCall.h"

#include <utility>

namespace tunelark {
namespace {

// How often the pointer is read while it rests in a gap between glyphs; no X round trips otherwise.
constexpr guint kWatchMilliseconds = 50;
// Off by default; G_MESSAGES_DEBUG=Tunelark-Hover shows what the lyrics text reports.
constexpr const char* kHoverDomain = "Tunelark-Hover";

}  // namespace

ShapedWindowHover::ShapedWindowHover(GtkWidget* window, std::function<void(bool entered)> report)
    : window_(window), report_(std::move(report)) {}

ShapedWindowHover::~ShapedWindowHover() { stopWatch(); }

void ShapedWindowHover::crossed(bool entering, double rootX, double rootY) {
    if (entering) {
        stopWatch();
        if (inside_) return;
        inside_ = true;
        g_log(kHoverDomain, G_LOG_LEVEL_DEBUG, "pointer entered the lyrics text");
        report_(true);
    } else if (inside_ && inBox(rootX, rootY)) {
        if (watch_ == 0) watch_ = g_timeout_add(kWatchMilliseconds, onWatch, this);
    } else {
        leave();
    }
}

void ShapedWindowHover::reset() {
    stopWatch();
    inside_ = false;
}

bool ShapedWindowHover::inBox(double rootX, double rootY) const {
    GdkWindow* window = gtk_widget_get_window(window_);
    if (window == nullptr || !gtk_widget_get_mapped(window_)) return false;
    int x = 0;
    int y = 0;
    gdk_window_get_origin(window, &x, &y);
    return rootX >= x && rootY >= y && rootX < x + gtk_widget_get_allocated_width(window_) &&
           rootY < y + gtk_widget_get_allocated_height(window_);
}

void ShapedWindowHover::leave() {
    stopWatch();
    if (!inside_) return;
    inside_ = false;
    g_log(kHoverDomain, G_LOG_LEVEL_DEBUG, "pointer left the lyrics text");
    report_(false);
}

void ShapedWindowHover::stopWatch() {
    if (watch_ != 0) g_source_remove(std::exchange(watch_, 0));
}

gboolean ShapedWindowHover::onWatch(gpointer data) noexcept {
    auto* self = static_cast<ShapedWindowHover*>(data);
    return guardedCall("lyrics text hover", gboolean(G_SOURCE_REMOVE), [&]() -> gboolean {
        GdkSeat* seat = gdk_display_get_default_seat(gtk_widget_get_display(self->window_));
        int x = 0;
        int y = 0;
        gdk_device_get_position(gdk_seat_get_pointer(seat), nullptr, &x, &y);
        if (self->inBox(x, y)) return G_SOURCE_CONTINUE;
        self->watch_ = 0;  // this source ends by returning G_SOURCE_REMOVE
        self->leave();
        return G_SOURCE_REMOVE;
    });
}

}  // namespace tunelark
