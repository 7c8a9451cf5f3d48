#pragma once
#include "platform/Dialogs.h"

#include <deque>

namespace tunelark::test {

// Dialogs that record what they showed and answer as the test says; each open panel takes the next
// queued answer, and with none left it is cancelled.
struct FakeDialogs : Dialogs {
    struct Question {
        std::string message, informative;
        std::vector<std::string> buttons;
    };
    void alert(const std::string& message) override { alerts.push_back(message); }
    int ask(const std::string& message, const std::string& info, const std::vector<std::string>& buttons) override {
        questions.push_back({message, info, buttons});
        return askAnswer;
    }
    bool presentError(const std::string& description) override {
        errors.push_back(description);
        return errorResolved;
    }
    std::optional<std::vector<std::string>> chooseFiles(const OpenPanelRequest& request) override {
        panels.push_back(request);
        if (chosenFiles.empty()) return std::nullopt;
        auto files = chosenFiles.front();
        chosenFiles.pop_front();
        return files;
    }

    std::vector<std::string> alerts, errors;
    std::vector<Question> questions;
    std::vector<OpenPanelRequest> panels;
    std::deque<std::vector<std::string>> chosenFiles;
    int askAnswer = 0;
    bool errorResolved = false;
};

}  // namespace tunelark::test
