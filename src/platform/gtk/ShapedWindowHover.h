#pragma once
#include <gtk/gtk.h>

#include <functional>

namespace tunelark {

// Without a compositor the lyrics window is cut to its glyphs, and X reports the pointer entering and
// leaving at the edge of every glyph. What a hand hovers is the text's box: a leave into a gap inside
// the box is held and the pointer watched until it leaves the box, and coming back onto a glyph is not
// a new entry, so the hover grey does not flicker between glyphs. Where the window is the box (with a
// compositor, or while the grey fills it) leaves happen at the box's edge and count at once.
class ShapedWindowHover {
public:
    // report(true) when the pointer enters the box, report(false) when it leaves; from the main loop.
    ShapedWindowHover(GtkWidget* window, std::function<void(bool entered)> report);
    ~ShapedWindowHover();
    ShapedWindowHover(const ShapedWindowHover&) = delete;
    ShapedWindowHover& operator=(const ShapedWindowHover&) = delete;

    // X's enter (true) or leave, with the pointer's root position.
    void crossed(bool entering, double rootX, double rootY);
    // The window went out of sight: forget the pointer without reporting.
    void reset();

private:
    bool inBox(double rootX, double rootY) const;
    void leave();
    void stopWatch();
    static gboolean onWatch(gpointer self) noexcept;

    GtkWidget* window_;
    std::function<void(bool)> report_;
    bool inside_ = false;
    guint watch_ = 0;
};

}  // namespace tunelark
