#include "page/MainVC.h"

#include "page/PageCalls.h"

namespace tunelark {

MainVC::MainVC(MainQueue& queue, PageView* webView, PageState& state)
    : queue_(queue), wkWebView_(webView), state_(state) {
    shared = this;
}

MainVC::~MainVC() {
    if (shared == this) shared = nullptr;
}

void MainVC::evaluate(const std::string& script) {
    if (wkWebView_ != nullptr) wkWebView_->evaluate(script);
}

void MainVC::post(BuildScript buildScript) {
    if (batch_ && !batch_->sent && queue_.postedCount() == batchPostedAs_) {
        batch_->calls.push_back(std::move(buildScript));
        return;
    }
    batch_ = std::make_shared<Batch>();
    batch_->calls.push_back(std::move(buildScript));
    queue_.post([batch = batch_] {
        batch->sent = true;
        MainVC* view = MainVC::shared;
        if (view == nullptr || !view->hasPage()) return;
        std::vector<std::string> scripts;
        scripts.reserve(batch->calls.size());
        for (const auto& build : batch->calls) scripts.push_back(build(*view));
        view->wkWebView_->evaluateAll(scripts);
    });
    batchPostedAs_ = queue_.postedCount();
}

void MainVC::setMode() {
    post([](const MainVC& view) { return setModeScript(playModeText(view.state_.playMode)); });
}

void MainVC::setIsPlaying(bool playing) {
    sentIsPlaying_ = playing;
    post([playing](const MainVC&) { return setIsPlayingScript(playing); });
}

void MainVC::setPlayingFilePath(const std::string& filePath) {
    post([filePath](const MainVC&) { return setPlayingFilePathScript(filePath); });
}

void MainVC::setMainFileName(const std::string& name) {
    sentMainFileName_ = name;
    post([name](const MainVC&) { return setMainFileNameScript(name); });
}

void MainVC::setDuration(const std::string& text) {
    sentDuration_ = text;
    post([text](const MainVC&) { return setDurationScript(text); });
}

void MainVC::setCurrent(const std::string& text) {
    post([text](const MainVC&) { return setCurrentScript(text); });
}

void MainVC::setSliderCurrentValue(std::int64_t value) {
    post([value](const MainVC&) { return setSliderCurrentValueScript(value); });
}

void MainVC::setSpeed(const std::string& text) {
    sentSpeed_ = text;
    post([text](const MainVC&) { return setSpeedScript(text); });
}

void MainVC::setLyricsSwitches(bool on) {
    post([on](const MainVC& view) { return setLyricsSwitchesScript(on, view.state_.displayingRowNum); });
}

void MainVC::sendPlaybackAgain(const std::string& initialSpeed) {
    setIsPlaying(sentIsPlaying_);
    setPlayingFilePath(state_.playingFilePath);
    // A page that was never told a duration or name shows its own "nothing loaded" already.
    if (sentDuration_) setDuration(*sentDuration_);
    if (sentMainFileName_) setMainFileName(*sentMainFileName_);
    setSpeed(sentSpeed_.value_or(initialSpeed));
}

}  // namespace tunelark
