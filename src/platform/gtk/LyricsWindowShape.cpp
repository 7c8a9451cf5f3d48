#include "platform/gtk/LyricsWindowShape.h"

#include "platform/glib/GuardedCall.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tunelark {
namespace {

// Pixels at least this opaque (of 255) are cut in: the hover grey (alpha 0.4) whole and the glyphs
// with most of their edges, but not the faint outer end of the text's shadow.
constexpr std::uint32_t kOpaqueEnough = 0x50;

struct RegionDeleter {
    void operator()(cairo_region_t* region) const { cairo_region_destroy(region); }
};
using RegionPtr = std::unique_ptr<cairo_region_t, RegionDeleter>;

// One rectangle per run of opaque-enough pixels in a row, built into a region in one pass.
RegionPtr opaqueRegion(cairo_surface_t* surface) {
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    int stride = cairo_image_surface_get_stride(surface);
    int width = cairo_image_surface_get_width(surface);
    int height = cairo_image_surface_get_height(surface);
    std::vector<cairo_rectangle_int_t> runs;
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<const std::uint32_t*>(data + std::ptrdiff_t(y) * stride);
        for (int x = 0; x < width;) {
            if ((row[x] >> 24) < kOpaqueEnough) {
                ++x;
                continue;
            }
            int start = x;
            while (x < width && (row[x] >> 24) >= kOpaqueEnough) ++x;
            runs.push_back({start, y, x - start, 1});
        }
    }
    return RegionPtr(cairo_region_create_rectangles(runs.data(), int(runs.size())));
}

// What the label paints now, its background and the text's shadow included, in window coordinates.
RegionPtr paintedRegion(GtkWidget* label) {
    GtkAllocation area;
    gtk_widget_get_allocation(label, &area);
    if (area.width <= 0 || area.height <= 0) return RegionPtr(cairo_region_create());
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, area.width, area.height);
    cairo_t* cr = cairo_create(surface);
    gtk_widget_draw(label, cr);
    cairo_destroy(cr);
    RegionPtr region = opaqueRegion(surface);
    cairo_surface_destroy(surface);
    cairo_region_translate(region.get(), area.x, area.y);
    return region;
}

}  // namespace

LyricsWindowShape::LyricsWindowShape(GtkWidget* window, GtkWidget* label)
    : window_(window),
      label_(label),
      composited_(gtk_widget_get_screen(window), "composited-changed", G_CALLBACK(onCompositedChanged), this),
      // Both run after GTK's own handlers: the label is allocated, styled and mapped by then.
      allocated_(window, "size-allocate", G_CALLBACK(onSizeAllocate), this),
      mapped_(label, "map", G_CALLBACK(onMap), this) {
    follow(gdk_screen_is_composited(gtk_widget_get_screen(window)));
}

void LyricsWindowShape::follow(bool composited) {
    shaping_ = !composited;
    stale_ = true;
    // With a compositor the transparent pixels are truly transparent: no shape, the whole box is live.
    if (composited)
        gtk_widget_shape_combine_region(window_, nullptr);
    else
        gtk_widget_queue_resize(label_);
}

void LyricsWindowShape::contentChanged(bool showsNothing) {
    empty_ = showsNothing;
    stale_ = true;
    // A new background alone lays nothing out; ask for it, so that the shape follows.
    if (shaping_) gtk_widget_queue_resize(label_);
}

void LyricsWindowShape::refresh() {
    // A label out of sight paints nothing; its shape waits until it is mapped.
    if (!shaping_ || !gtk_widget_is_drawable(label_)) return;
    GtkAllocation area;
    gtk_widget_get_allocation(label_, &area);
    bool moved = area.x != shaped_.x || area.y != shaped_.y || area.width != shaped_.width ||
                 area.height != shaped_.height;
    if (!stale_ && !moved) return;
    shaped_ = area;
    stale_ = false;
    rebuild();
}

// No input shape of its own: X gives a window input only inside its bounding shape, so one could not
// widen it. The pointer comes in on a glyph; the hover grey then makes the whole box the shape, and
// the user presses, drags and double presses anywhere in it (GtkLyricsWindow holds that grey).
void LyricsWindowShape::rebuild() {
    RegionPtr region = empty_ ? RegionPtr(cairo_region_create()) : paintedRegion(label_);
    gtk_widget_shape_combine_region(window_, region.get());
}

void LyricsWindowShape::onSizeAllocate(GtkWidget*, GdkRectangle*, gpointer data) noexcept {
    auto* self = static_cast<LyricsWindowShape*>(data);
    guardedCall("lyrics window shape", [&] { self->refresh(); });
}

void LyricsWindowShape::onMap(GtkWidget*, gpointer data) noexcept {
    auto* self = static_cast<LyricsWindowShape*>(data);
    guardedCall("lyrics window shape", [&] { self->refresh(); });
}

void LyricsWindowShape::onCompositedChanged(GdkScreen* screen, gpointer data) noexcept {
    auto* self = static_cast<LyricsWindowShape*>(data);
    guardedCall("lyrics window compositor", [&] { self->follow(gdk_screen_is_composited(screen)); });
}

}  // namespace tunelark
