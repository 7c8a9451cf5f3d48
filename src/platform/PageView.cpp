#include "platform/PageView.h"

#include "platform/Console.h"

namespace tunelark {

void PageView::callAll(const std::vector<PageCall>& calls) {
    for (const auto& call : calls) evaluate(call.script());
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
