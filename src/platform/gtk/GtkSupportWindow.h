#pragma once
#include "platform/SupportWindow.h"
#include "platform/glib/GObjectHandles.h"

#include <vector>

typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;

namespace tunelark {

// A small dialog-like window: a heading, a paragraph and a close button.
class GtkSupportWindow : public SupportWindow {
public:
    GtkSupportWindow(const SupportWindowContent& content, GtkWindow* parent);
    ~GtkSupportWindow() override;
    GtkSupportWindow(const GtkSupportWindow&) = delete;
    GtkSupportWindow& operator=(const GtkSupportWindow&) = delete;

    void show() override;
    void close() override;

private:
    friend struct GtkSupportWindowSignals;
    GObjectPtr<GtkWidget> window_;
    std::vector<SignalConnection> connections_;
};

}  // namespace tunelark
