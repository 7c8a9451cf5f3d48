#pragma once
#include "platform/Dialogs.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace tunelark::test {

// Dialogs that record what they showed and answer as the test says.
class FakeDialogs : public Dialogs {
public:
    void alert(const std::string& message) override { alerts.push_back(message); }
    int ask(const std::string& message, const std::string& informative,
            const std::vector<std::string>& buttons) override {
        questions.push_back({message, informative, buttons});
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

    struct Question {
        std::string message;
        std::string informative;
        std::vector<std::string> buttons;
    };
    std::vector<std::string> alerts;
    std::vector<Question> questions;
    std::vector<std::string> errors;
    std::vector<OpenPanelRequest> panels;
    // Each open panel takes the next answer; with none left the panel is cancelled.
    std::deque<std::vector<std::string>> chosenFiles;
    int askAnswer = 0;
    bool errorResolved = false;
};

}  // namespace tunelark::test
