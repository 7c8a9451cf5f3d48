#pragma once
#include "platform/ProgressIndicator.h"

#include <vector>

namespace tunelark::test {

// Records what the indicator showed; pressCancel does what the Cancel control does.
struct FakeProgressIndicator : ProgressIndicator {
    void show(const std::string& text, std::function<void()> cancel) override {
        texts.push_back(text);
        shown = true;
        onCancel = std::move(cancel);
    }
    void hide() override {
        shown = false;
        onCancel = {};
        ++hides;
    }
    void pressCancel() {
        if (auto cancel = onCancel) cancel();
    }

    std::vector<std::string> texts;
    bool shown = false;
    int hides = 0;
    std::function<void()> onCancel;
};

}  // namespace tunelark::test
