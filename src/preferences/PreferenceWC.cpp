#include "preferences/PreferenceWC.h"

#include "preferences/PreferenceVC.h"

namespace tunelark {

PreferenceWC::PreferenceWC(PreferencesWindow& window) : window_(window) {
    shared = this;
    window_.setDelegate(this);
}

PreferenceWC::~PreferenceWC() {
    window_.setDelegate(nullptr);
    if (shared == this) shared = nullptr;
}

void PreferenceWC::windowDidLoad() { shared = this; }

void PreferenceWC::showWindow() { window_.show(); }

void PreferenceWC::windowWillClose() {
    if (shared == this) shared = nullptr;
    if (PreferenceVC* viewController = PreferenceVC::shared) {
        viewController->stopPollTimer();
        viewController->revertToCurrent();
    }
}

}  // namespace tunelark
