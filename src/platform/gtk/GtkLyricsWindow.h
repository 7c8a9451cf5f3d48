#pragma once
#include "platform/LyricsWindow.h"
#include "platform/glib/GObjectHandles.h"
#include "platform/gtk/LyricsWindowShape.h"
#include "platform/gtk/ShapedWindowHover.h"

#include <gtk/gtk.h>

#include <optional>
#include <string>

namespace tunelark {

// The floating lyrics window on X11: an undecorated, keep-above, skip-taskbar window with an RGBA
// visual, holding one centred label in an event box. Colour and background come from one CSS provider,
// rebuilt only when one of them changes, the font size from a label attribute; every setter that
// repeats what is shown makes no toolkit call, since the playback clock sets all of them ten times a
// second. Without a compositor the window is cut to the painted text (LyricsWindowShape).
class GtkLyricsWindow : public LyricsWindow {
public:
    GtkLyricsWindow();
    ~GtkLyricsWindow() override;
    GtkLyricsWindow(const GtkLyricsWindow&) = delete;
    GtkLyricsWindow& operator=(const GtkLyricsWindow&) = delete;

    void setTextEvents(LyricsTextEvents* events) override { events_ = events; }
    void setDelegate(LyricsWindowDelegate* delegate) override { delegate_ = delegate; }

    Rect frame() const override { return frame_; }
    void setFrame(const Rect& frame) override;
    void show() override;
    void hide() override;
    bool isVisible() const override;

    void setText(const std::string& text) override;
    void setFontSize(double points) override;
    void setTextColor(const Rgba& color) override;
    void setTextBackground(const Rgba& color) override;
    LabelSize naturalTextSize() override;

private:
    struct CssStyle {
        Rgba color{0.5, 0.5, 0.5, 1};
        Rgba background{0, 0, 0, 0};
        bool operator==(const CssStyle&) const = default;
    };
    void buildWidgets();
    void connectSignals();
    void applyFontSize();
    void applyCss();
    void showBackground();
    void pointerCrossedBox(bool entered);
    void applyFrame();
    GdkMonitor* mainMonitor() const;
    double mainScreenBottom() const;

    static gboolean onDraw(GtkWidget* widget, cairo_t* cr, gpointer self) noexcept;
    static gboolean onButtonPress(GtkWidget* widget, GdkEventButton* event, gpointer self) noexcept;
    static gboolean onMotion(GtkWidget* widget, GdkEventMotion* event, gpointer self) noexcept;
    static gboolean onButtonRelease(GtkWidget* widget, GdkEventButton* event, gpointer self) noexcept;
    static gboolean onCrossing(GtkWidget* widget, GdkEventCrossing* event, gpointer self) noexcept;
    static gboolean onFocusOut(GtkWidget* widget, GdkEventFocus* event, gpointer self) noexcept;
    static gboolean onDelete(GtkWidget* widget, GdkEvent* event, gpointer self) noexcept;

    GtkWidget* window_ = nullptr;
    GtkWidget* eventBox_ = nullptr;
    GtkWidget* label_ = nullptr;
    GObjectPtr<GtkCssProvider> css_;
    std::optional<LyricsWindowShape> shape_;
    std::optional<ShapedWindowHover> hover_;

    LyricsTextEvents* events_ = nullptr;
    LyricsWindowDelegate* delegate_ = nullptr;

    // What is shown, so that repeating it costs nothing.
    std::string text_;
    double fontSize_ = 18;
    CssStyle style_;
    Rgba requestedBackground_{0, 0, 0, 0};
    Rgba heldBackground_{0, 0, 0, 0};
    bool pointerInBox_ = false;
    Rect frame_;
    std::optional<LabelSize> natural_;

    // The primary button is down; drags are measured between successive root positions.
    bool pressed_ = false;
    double lastRootX_ = 0;
    double lastRootY_ = 0;
};

}  // namespace tunelark
