#pragma once
#include "platform/DesktopBus.h"

#include <string>
#include <vector>

namespace tunelark::test {

// Records the signals an exported object sends.
class FakeBusSignals : public BusSignals {
public:
    struct Changed { std::string interfaceName; BusProperties values; };
    struct Signal { std::string interfaceName, name; std::vector<BusValue> args; };
    void propertiesChanged(const std::string& interfaceName, const BusProperties& values) override {
        changes.push_back({interfaceName, values});
    }
    void emitSignal(const std::string& interfaceName, const std::string& name,
                    const std::vector<BusValue>& args) override {
        emitted.push_back({interfaceName, name, args});
    }
    std::vector<Changed> changes;
    std::vector<Signal> emitted;
};

}  // namespace tunelark::test
