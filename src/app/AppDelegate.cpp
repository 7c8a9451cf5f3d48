#include "app/AppDelegate.h"

#include "main_window/MainWC.h"
#include "platform/Localized.h"

namespace tunelark {

AppDelegate::AppDelegate(Deps deps) : deps_(std::move(deps)) { shared = this; }

AppDelegate::~AppDelegate() {
    if (shared == this) shared = nullptr;
}

void AppDelegate::applicationDidFinishLaunching() { deps_.outputDeviceWatch.start(deps_.queue); }

bool AppDelegate::applicationShouldHandleReopen() {
    showMainWindow();
    return true;
}

void AppDelegate::showMainWindow() {
    if (MainWC::shared != nullptr) MainWC::shared->showWindow();
}

// The store keeps no half-made edits, so committing pending edits before a save always succeeds.
void AppDelegate::saveAction() {
    if (!deps_.store.hasChanges()) return;
    if (const auto error = deps_.store.saveNow()) deps_.dialogs.presentError(*error);
}

AppDelegate::TerminateReply AppDelegate::applicationShouldTerminate() {
    if (!deps_.store.hasChanges()) return TerminateReply::now;
    const auto error = deps_.store.saveNow();
    if (!error) return TerminateReply::now;
    if (deps_.dialogs.presentError(*error)) return TerminateReply::cancel;
    const int pressed = deps_.dialogs.ask(
        localized("Could not save changes while quitting. Quit anyway?"),
        localized("Quitting now will lose any changes you have made since the last successful save"),
        {localized("Quit anyway"), localized("Cancel")});
    return pressed == 1 ? TerminateReply::cancel : TerminateReply::now;
}

void AppDelegate::applicationWillTerminate() {
    deps_.outputDeviceWatch.stop();
    deps_.preferences.closeColorPanel();
}

void AppDelegate::clickedMenuPreference() { deps_.preferences.open(); }

void AppDelegate::clickedSponsor() {
    if (sponsorWC_) sponsorWC_->close();
    sponsorWC_.reset();
    if (!deps_.makeSupportWindow) return;
    sponsorWC_ = deps_.makeSupportWindow(supportWindowContent());
    if (sponsorWC_) sponsorWC_->show();
}

SupportWindowContent AppDelegate::supportWindowContent() {
    return {
        localized("Support Tunelark"),
        localized("Thank you for using Tunelark"),
        localized("Tunelark is free to use: there is nothing to buy. Telling a friend about it, or reporting "
                  "a song whose lyrics do not follow the music, helps it more than anything."),
        localized("Close"),
    };
}

}  // namespace tunelark
