#pragma once
#include "library/store/Store.h"
#include "platform/MainQueue.h"
#include "platform/PreferencesWindow.h"

#include <functional>
#include <memory>

namespace tunelark {

// The Preferences menu item: at most one preferences window at a time. Main thread only.
class PreferencesOpener {
public:
    using WindowFactory = std::function<std::unique_ptr<PreferencesWindow>()>;

    PreferencesOpener(WindowFactory makeWindow, Store& store, MainQueue& queue);
    ~PreferencesOpener();
    PreferencesOpener(const PreferencesOpener&) = delete;
    PreferencesOpener& operator=(const PreferencesOpener&) = delete;

    // Brings the open window forward, or makes a fresh one that reloads the stored values.
    void open();
    // Closes the colour panel of the open preferences window, if any; the window itself stays.
    void closeColorPanel();

private:
    struct Scene;
    WindowFactory makeWindow_;
    Store& store_;
    MainQueue& queue_;
    // The last window made; kept after it closes (its view controller stays PreferenceVC::shared)
    // until the next one replaces it.
    std::unique_ptr<Scene> scene_;
};

}  // namespace tunelark
