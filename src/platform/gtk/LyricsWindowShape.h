#pragma once
#include "platform/glib/GObjectHandles.h"

#include <gtk/gtk.h>

namespace tunelark {

// Cuts the lyrics window to what its label paints while the screen has no compositor, since the
// transparent pixels of an RGBA window show black then; with a compositor the window stays whole.
// Follows the compositor coming and going. The shape is rebuilt when the label is laid out or mapped
// after its text, font, size or background changed, never when it repeats what is shown. Not at a
// draw: GDK draws nothing outside the shape, so a window cut to nothing would never draw again.
class LyricsWindowShape {
public:
    LyricsWindowShape(GtkWidget* window, GtkWidget* label);
    LyricsWindowShape(const LyricsWindowShape&) = delete;
    LyricsWindowShape& operator=(const LyricsWindowShape&) = delete;

    // What the label paints changed; showsNothing: the window should show nothing at all.
    void contentChanged(bool showsNothing);
    // The window is being cut to its text (no compositor).
    bool shaping() const { return shaping_; }

private:
    void follow(bool composited);
    void refresh();
    void rebuild();
    static void onSizeAllocate(GtkWidget* window, GdkRectangle* allocation, gpointer self) noexcept;
    static void onMap(GtkWidget* label, gpointer self) noexcept;
    static void onCompositedChanged(GdkScreen* screen, gpointer self) noexcept;

    GtkWidget* window_;
    GtkWidget* label_;
    SignalConnection composited_;
    SignalConnection allocated_;
    SignalConnection mapped_;
    bool shaping_ = false;
    bool stale_ = true;
    bool empty_ = true;
    GtkAllocation shaped_{};
};

}  // namespace tunelark
