#include "lyrics_window/LyricsWindowSwitch.h"

#include "lyrics_window/DragableTextField.h"
#include "lyrics_window/LyricsVC.h"
#include "lyrics_window/LyricsWC.h"

namespace tunelark {

// Declared in the order of making; destroyed the other way round, the window last.
struct LyricsWindowSwitch::Scene {
    std::unique_ptr<LyricsWindow> window;
    std::unique_ptr<LyricsWC> windowController;
    std::unique_ptr<DragableTextField> txtLyrics;
    std::unique_ptr<LyricsVC> viewController;
};

LyricsWindowSwitch::LyricsWindowSwitch(WindowFactory makeWindow, Store& store, PageState& page,
                                       std::function<void()> showMainWindow)
    : makeWindow_(std::move(makeWindow)), store_(store), page_(page), showMainWindow_(std::move(showMainWindow)) {}

LyricsWindowSwitch::~LyricsWindowSwitch() = default;

void LyricsWindowSwitch::turnLyricsOn(const std::string& needOn, const std::string& rowAmoutString) {
    if (needOn == "false") {
        if (LyricsWC::shared != nullptr) LyricsWC::shared->hideWindow();
    } else if (needOn == "true") {
        if (LyricsWC::shared == nullptr) makeLyricsWindow();
        if (LyricsWC::shared != nullptr) LyricsWC::shared->showWindow();
    }
    setRowMode(rowAmoutString);
}

void LyricsWindowSwitch::setRowMode(const std::string& rowAmoutString) {
    if (rowAmoutString == "oneRow") page_.displayingRowNum = 1;
    if (rowAmoutString == "towRows") page_.displayingRowNum = 2;
}

bool LyricsWindowSwitch::isShown() const {
    return LyricsWC::shared != nullptr && LyricsWC::shared->window().isVisible();
}

void LyricsWindowSwitch::makeLyricsWindow() {
    if (!makeWindow_) return;
    auto window = makeWindow_();
    if (!window) return;
    auto scene = std::make_unique<Scene>();
    scene->window = std::move(window);
    scene->windowController = std::make_unique<LyricsWC>(*scene->window);
    DragableTextField::Hooks hooks{
        showMainWindow_,
        [] { return LyricsVC::shared != nullptr && !LyricsVC::shared->keepBackgroundColor; },
    };
    scene->txtLyrics = std::make_unique<DragableTextField>(*scene->window, std::move(hooks));
    scene->viewController = std::make_unique<LyricsVC>(*scene->txtLyrics, page_);
    scene->viewController->loadStyle(store_);
    scene_ = std::move(scene);
}

}  // namespace tunelark
