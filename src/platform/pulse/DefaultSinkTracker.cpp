#include "platform/pulse/DefaultSinkTracker.h"

#include <utility>

namespace tunelark {

std::uint32_t outputDeviceIdForSink(std::string_view sinkName, std::string_view portName) {
    std::uint32_t hash = 2166136261u;
    const auto mix = [&hash](std::string_view text) {
        for (unsigned char c : text) {
            hash ^= c;
            hash *= 16777619u;
        }
    };
    mix(sinkName);
    if (!portName.empty()) {
        // A separator, so that a name and a port never read as another name and port.
        mix(std::string_view("\0", 1));
        mix(portName);
    }
    return hash == 0 ? 1 : hash;
}

void DefaultSinkTracker::serverChanged() {
    serverTicket_ = ++lastTicket_;
    questions_.askServerInfo(serverTicket_);
}

void DefaultSinkTracker::sinkChanged(std::uint32_t index) {
    // Another sink's changes do not matter; before the default's index is known, any sink might be it.
    if (defaultName_.empty() || (defaultIndex_ && *defaultIndex_ != index)) return;
    askSinkInfo();
}

void DefaultSinkTracker::disconnected() {
    serverTicket_ = sinkTicket_ = 0;
    defaultName_.clear();
    defaultIndex_.reset();
    publish("", "");
}

void DefaultSinkTracker::serverInfoAnswered(std::uint64_t ticket, const std::string& defaultSinkName) {
    if (ticket != serverTicket_) return;
    if (defaultSinkName != defaultName_) defaultIndex_.reset();
    defaultName_ = defaultSinkName;
    if (defaultName_.empty()) {
        sinkTicket_ = 0;
        publish("", "");
        return;
    }
    // The id changes once, when the port of the new default is known too.
    askSinkInfo();
}

void DefaultSinkTracker::sinkInfoAnswered(std::uint64_t ticket, const std::optional<SinkInfo>& sink) {
    if (ticket != sinkTicket_) return;
    if (!sink) {
        // Gone between the two questions: its name is all there is until the server names another.
        publish(defaultName_, "");
        return;
    }
    defaultIndex_ = sink->index;
    publish(defaultName_, sink->activePort);
}

void DefaultSinkTracker::askSinkInfo() {
    sinkTicket_ = ++lastTicket_;
    questions_.askSinkInfo(sinkTicket_, defaultName_);
}

void DefaultSinkTracker::publish(const std::string& sinkName, const std::string& portName) {
    sinkName_ = sinkName;
    portName_ = portName;
    const std::uint32_t before = std::exchange(id_, sinkName.empty() ? 0 : outputDeviceIdForSink(sinkName, portName));
    if (id_ != before && idChanged_) idChanged_();
}

}  // namespace tunelark
