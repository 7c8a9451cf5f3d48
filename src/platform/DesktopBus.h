#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tunelark {

// A D-Bus object path ("o"), kept apart from plain strings ("s").
struct BusObjectPath {
    std::string path;
    bool operator==(const BusObjectPath&) const = default;
};

// A 32-bit integer ("i") where an interface asks for one; plain integers are sent as x.
struct BusInt32 {
    std::int32_t value = 0;
    bool operator==(const BusInt32&) const = default;
};

using BusStrings = std::vector<std::string>;
// The D-Bus values our objects exchange: b, x, d, s, o, as, i, and a{sv} whose values are any of those.
using BusScalar = std::variant<bool, std::int64_t, double, std::string, BusObjectPath, BusStrings, BusInt32>;
using BusDict = std::map<std::string, BusScalar>;
using BusValue =
    std::variant<bool, std::int64_t, double, std::string, BusObjectPath, BusStrings, BusInt32, BusDict>;
using BusProperties = std::map<std::string, BusValue>;

// An error for the caller: a D-Bus error name (such as org.freedesktop.DBus.Error.InvalidArgs) and a text.
struct BusError {
    std::string name;
    std::string message;
};

// What one exported object does. The platform calls it on the main thread, one request at a time, with
// arguments of the types its introspection data declares (smaller integers arrive as x). Strings that
// are not valid UTF-8 reach the bus with the bad bytes replaced.
class BusObject {
public:
    virtual ~BusObject() = default;
    // Methods answer with no values, or with an error.
    virtual std::optional<BusError> callMethod(const std::string& interfaceName, const std::string& method,
                                               const std::vector<BusValue>& args) = 0;
    // Nothing for a property this object does not have.
    virtual std::optional<BusValue> readProperty(const std::string& interfaceName, const std::string& name) = 0;
    virtual std::optional<BusError> writeProperty(const std::string& interfaceName, const std::string& name,
                                                  const BusValue& value) = 0;
};

// The signals of that object, sent by the platform. Main thread only; nothing is sent while the object
// is not on the bus.
class BusSignals {
public:
    virtual ~BusSignals() = default;
    // org.freedesktop.DBus.Properties.PropertiesChanged with the new values; nothing is invalidated.
    virtual void propertiesChanged(const std::string& interfaceName, const BusProperties& changed) = 0;
    virtual void emitSignal(const std::string& interfaceName, const std::string& signal,
                            const std::vector<BusValue>& args) = 0;
};

}  // namespace tunelark
