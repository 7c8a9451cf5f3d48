#pragma once
#include "platform/DesktopLook.h"
#include "platform/glib/GObjectHandles.h"
#include "platform/glib/GSourceHandles.h"

#include <functional>
#include <optional>
#include <vector>

typedef struct _GtkSettings GtkSettings;
typedef struct _GDBusConnection GDBusConnection;
typedef struct _GCancellable GCancellable;

namespace tunelark {

// The settings portal's color-scheme, read over the session bus and followed through SettingChanged,
// and GTK's theme settings. Main thread only; the portal's answers arrive later on the main loop.
class GtkDesktopLook : public DesktopLook {
public:
    GtkDesktopLook();
    ~GtkDesktopLook() override;  // cancels the portal calls and unsubscribes
    GtkDesktopLook(const GtkDesktopLook&) = delete;
    GtkDesktopLook& operator=(const GtkDesktopLook&) = delete;

    DesktopAppearance appearance() const override;
    void setOnChanged(std::function<void()> onChanged) override;
    void setToolkitDark(bool dark) override;

private:
    friend struct GtkDesktopLookCalls;
    void busReady(GDBusConnection* bus);
    void readPortal(const char* method);
    void portalValue(std::optional<unsigned> colorScheme);
    void changed();

    GtkSettings* settings_;  // GTK's own, never freed
    bool userPrefersDark_;   // before we set the preference ourselves
    std::optional<unsigned> portalColorScheme_;
    GObjectPtr<GCancellable> cancellable_;
    GObjectPtr<GDBusConnection> bus_;
    unsigned subscription_ = 0;
    std::function<void()> onChanged_;
    std::vector<SignalConnection> connections_;
    bool toolkitDark_ = false;
    IdleCall applyDark_;  // last, so it is cancelled before the rest goes
};

}  // namespace tunelark
