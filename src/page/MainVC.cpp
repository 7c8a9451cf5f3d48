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

void MainVC::post(BuildCall buildCall) {
    if (batch_ && !batch_->sent && queue_.postedCount() == batchPostedAs_) {
        batch_->calls.push_back(std::move(buildCall));
        return;
    }
    batch_ = std::make_shared<Batch>();
    batch_->calls.push_back(std::move(buildCall));
    queue_.post([batch = batch_] {
        batch->sent = true;
        MainVC* view = MainVC::shared;
        if (view == nullptr || !view->hasPage()) return;
        std::vector<PageCall> calls;
        calls.reserve(batch->calls.size());
        for (const auto& build : batch->calls) calls.push_back(build(*view));
        view->wkWebView_->callAll(calls);
    });
    batchPostedAs_ = queue_.postedCount();
}

void MainVC::setMode() {
    post([](const MainVC& view) { return setModeCall(playModeText(view.state_.playMode)); });
}

void MainVC::setIsPlaying(bool playing) {
    sentIsPlaying_ = playing;
    post([playing](const MainVC&) { return setIsPlayingCall(playing); });
}

void MainVC::setPlayingFilePath(const std::string& filePath) {
    post([filePath](const MainVC&) { return setPlayingFilePathCall(filePath); });
}

void MainVC::setMainFileName(const std::string& name) {
    sentMainFileName_ = name;
    post([name](const MainVC&) { return setMainFileNameCall(name); });
}

void MainVC::setDuration(const std::string& text) {
    sentDuration_ = text;
    post([text](const MainVC&) { return setDurationCall(text); });
}

void MainVC::setCurrent(const std::string& text) {
    post([text](const MainVC&) { return setCurrentCall(text); });
}

void MainVC::setSliderCurrentValue(std::int64_t value) {
    post([value](const MainVC&) { return setSliderCurrentValueCall(value); });
}

void MainVC::setSpeed(const std::string& text) {
    sentSpeed_ = text;
    post([text](const MainVC&) { return setSpeedCall(text); });
}

void MainVC::setLyricsSwitches(bool on) {
    post([on](const MainVC& view) { return setLyricsSwitchesCall(on, view.state_.displayingRowNum); });
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
