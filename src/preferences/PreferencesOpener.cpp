#include "preferences/PreferencesOpener.h"

#include "preferences/PreferenceVC.h"
#include "preferences/PreferenceWC.h"

namespace tunelark {

// Declared in the order of making; destroyed the other way round, the window last.
struct PreferencesOpener::Scene {
    std::unique_ptr<PreferencesWindow> window;
    std::unique_ptr<PreferenceWC> windowController;
    std::unique_ptr<PreferenceVC> viewController;

    ~Scene() {
        if (window) window->setActions(nullptr);
    }
};

PreferencesOpener::PreferencesOpener(WindowFactory makeWindow, Store& store, MainQueue& queue)
    : makeWindow_(std::move(makeWindow)), store_(store), queue_(queue) {}

PreferencesOpener::~PreferencesOpener() = default;

void PreferencesOpener::open() {
    if (PreferenceWC::shared != nullptr) {
        PreferenceWC::shared->showWindow();
        return;
    }
    if (!makeWindow_) return;
    auto window = makeWindow_();
    if (!window) return;
    scene_.reset();
    auto scene = std::make_unique<Scene>();
    scene->window = std::move(window);
    scene->windowController = std::make_unique<PreferenceWC>(*scene->window);
    scene->windowController->windowDidLoad();
    scene->viewController = std::make_unique<PreferenceVC>(*scene->window, store_, queue_);
    scene->window->setActions(scene->viewController.get());
    scene->viewController->loadSettings();
    scene_ = std::move(scene);
    scene_->windowController->showWindow();
}

void PreferencesOpener::closeColorPanel() {
    if (PreferenceWC::shared != nullptr && scene_) scene_->window->deactivateColorWell();
}

}  // namespace tunelark
