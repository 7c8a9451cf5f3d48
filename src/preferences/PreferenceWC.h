#pragma once
#include "platform/PreferencesWindow.h"

namespace tunelark {

// The preferences window's controller. While its window is open it is PreferenceWC::shared, which is
// how the menu finds the open window instead of making a second one. Main thread only.
class PreferenceWC : public PreferencesWindowDelegate {
public:
    // The controller of the open preferences window; empty while none is open.
    static inline PreferenceWC* shared = nullptr;

    explicit PreferenceWC(PreferencesWindow& window);
    ~PreferenceWC() override;
    PreferenceWC(const PreferenceWC&) = delete;
    PreferenceWC& operator=(const PreferenceWC&) = delete;

    void windowDidLoad();
    void showWindow();
    // Empties the slot, stops the poll and puts the lyrics window back to the stored style.
    void windowWillClose() override;

private:
    PreferencesWindow& window_;
};

}  // namespace tunelark
