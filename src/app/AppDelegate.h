#pragma once
#include "engine/OutputDeviceWatch.h"
#include "library/store/Store.h"
#include "platform/Dialogs.h"
#include "platform/MainQueue.h"
#include "platform/SupportWindow.h"
#include "preferences/PreferencesOpener.h"

#include <functional>
#include <memory>

namespace tunelark {

// The first object of the program: launch, reopen and quit requests, the menu's actions, and the
// output-device watcher. Main thread only.
class AppDelegate {
public:
    enum class TerminateReply { now, cancel };

    struct Deps {
        Store& store;
        Dialogs& dialogs;
        MainQueue& queue;
        OutputDeviceWatch& outputDeviceWatch;
        PreferencesOpener& preferences;
        std::function<std::unique_ptr<SupportWindow>(const SupportWindowContent&)> makeSupportWindow;
    };

    // The delegate made last; cleared when it goes.
    static inline AppDelegate* shared = nullptr;

    explicit AppDelegate(Deps deps);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    // Starts the 0.07 s output-device watcher; nothing else.
    void applicationDidFinishLaunching();
    // Another launch of the program while it runs: the main window comes forward.
    bool applicationShouldHandleReopen();
    void showMainWindow();
    // Saves unsaved changes; a failure is presented to the user and the changes stay.
    void saveAction();
    // Saves, or asks whether to quit without the changes that cannot be saved.
    TerminateReply applicationShouldTerminate();
    // Stops the watcher and closes the colour panel. Saves nothing.
    void applicationWillTerminate();
    void clickedMenuPreference();
    // Replaces an open support window with a new one.
    void clickedSponsor();

    static SupportWindowContent supportWindowContent();

private:
    Deps deps_;
    std::unique_ptr<SupportWindow> sponsorWC_;
};

}  // namespace tunelark
