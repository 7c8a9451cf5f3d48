#include "platform/PageView.h"

#include "platform/Console.h"

namespace tunelark {

void PageView::evaluateAll(const std::vector<std::string>& scripts) {
    for (const auto& script : scripts) evaluate(script);
}

bool PageView::bindMessage(const std::string& name, MessageHandler handler) {
    if (!boundNames_.insert(name).second) {
        // Replacing would silently cut off whoever bound it first.
        consoleLine("Message handler refused: " + name + " is already bound");
        return false;
    }
    registerHandler(name, std::move(handler));
    return true;
}

}  // namespace tunelark
