#pragma once
#include "platform/PageView.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tunelark::test {

// A page that records every script and lets the test post messages as the page would.
class FakePageView : public PageView {
public:
    void evaluate(const std::string& script) override { scripts.push_back(script); }
    void registerHandler(const std::string& name, MessageHandler handler) override {
        handlers[name] = std::move(handler);
    }
    void setStyleOverride(const std::string& css) override { styleOverrides.push_back(css); }
    // False when no handler has that name, as the page's post would fail.
    bool post(const std::string& name, const std::string& bodyJson) {
        const auto it = handlers.find(name);
        return it != handlers.end() && (it->second(bodyJson), true);
    }
    std::vector<std::string> scripts;
    std::vector<std::string> styleOverrides;
    std::map<std::string, std::function<void(const std::string&)>> handlers;
};

}  // namespace tunelark::test
