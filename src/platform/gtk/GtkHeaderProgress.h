#pragma once
#include "platform/ProgressIndicator.h"
#include "platform/glib/GObjectHandles.h"

typedef struct _GtkWidget GtkWidget;

namespace tunelark {

// Progress at the start of a window's header bar: a spinner, the text and a Cancel button, hidden until
// shown. Main thread only; the header bar must outlive this object.
class GtkHeaderProgress : public ProgressIndicator {
public:
    explicit GtkHeaderProgress(GtkWidget* headerBar);
    ~GtkHeaderProgress() override;
    GtkHeaderProgress(const GtkHeaderProgress&) = delete;
    GtkHeaderProgress& operator=(const GtkHeaderProgress&) = delete;

    void show(const std::string& text, std::function<void()> onCancel) override;
    void hide() override;

private:
    friend struct GtkHeaderProgressSignals;

    GObjectPtr<GtkWidget> box_;  // our own reference: the header bar may go first at shutdown
    GtkWidget* spinner_ = nullptr;
    GtkWidget* label_ = nullptr;
    GtkWidget* cancel_ = nullptr;
    std::function<void()> onCancel_;
    SignalConnection clicked_;
};

}  // namespace tunelark
