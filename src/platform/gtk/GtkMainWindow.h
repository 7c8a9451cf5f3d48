#pragma once
#include "platform/MainWindow.h"
#include "platform/glib/GObjectHandles.h"

#include <functional>
#include <optional>
#include <vector>

typedef struct _GtkApplication GtkApplication;
typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;
typedef struct _GMenuModel GMenuModel;

namespace tunelark {

class WkWebViewWithMouseEvent;

// The main window: a header bar titled "Tunelark" above the page's web view. It stays unmapped until
// the first show(); until then frame() is (0, 0, 0, 0). Frames are converted to core coordinates.
class GtkMainWindow : public MainWindow {
public:
    GtkMainWindow(GtkApplication* application, WkWebViewWithMouseEvent& webView);
    ~GtkMainWindow() override;  // destroys the window
    GtkMainWindow(const GtkMainWindow&) = delete;
    GtkMainWindow& operator=(const GtkMainWindow&) = delete;

    Rect frame() const override;
    void setFrame(const Rect& frame) override;
    void setMinimumSize(double width, double height) override;
    bool isVisible() const override;
    void show() override;
    void hide() override;
    // Also false when the pressed button has been released meanwhile.
    bool beginDragFromLastPress() override;
    bool windowManagerMaximizes() const override;
    bool isMaximized() const override;
    void maximize() override;
    void unmaximize(const Rect& restored) override;

    // The user asks to close the window; the window stays until the callback decides.
    void setOnCloseRequest(std::function<void()> onCloseRequest);
    // Puts the application's primary menu behind a menu button at the end of the header bar.
    void setPrimaryMenu(GMenuModel* menu);
    GtkWindow* gtkWindow() const;
    GtkWidget* headerBar() const { return headerBar_; }

private:
    friend struct GtkMainWindowSignals;
    void refreshFrame();
    void stateChanged(bool iconified, bool maximized);
    // Tells the page's view whether anyone can see it now.
    void sightChanged();
    void laidOut();
    double titleBarHeight() const;

    WkWebViewWithMouseEvent& webView_;
    GObjectPtr<GtkWidget> window_;
    GtkWidget* headerBar_ = nullptr;  // owned by the window
    GtkWidget* menuButton_ = nullptr;  // owned by the header bar
    Rect gtkFrame_;  // X11 coordinates, title bar included; the last requested or configured frame
    bool everShown_ = false;
    bool iconified_ = false;
    bool maximized_ = false;
    bool fullyObscured_ = false;
    std::optional<Rect> pendingRestore_;  // the frame to take once the window manager has unmaximised
    bool restoreOnLayout_ = false;        // it has: take the frame at the next layout
    std::function<void()> onCloseRequest_;
    std::vector<SignalConnection> connections_;
};

}  // namespace tunelark
