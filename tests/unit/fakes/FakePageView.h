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
    void registerHandler(const std::string& name, std::function<void(const std::string&)> handler) override {
        order.push_back(name);
        handlers[name] = std::move(handler);
    }
    // Posts a message; false when no handler has that name (the page-side post would fail).
    bool post(const std::string& name, const std::string& bodyJson) {
        auto it = handlers.find(name);
        if (it == handlers.end()) return false;
        it->second(bodyJson);
        return true;
    }

    std::vector<std::string> scripts;
    std::vector<std::string> order;
    std::map<std::string, std::function<void(const std::string&)>> handlers;
};

}  // namespace tunelark::test
