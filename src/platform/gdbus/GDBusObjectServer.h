#pragma once
#include "platform/DesktopBus.h"
#include "platform/gdbus/GDBusHandles.h"
#include "platform/glib/GObjectHandles.h"

#include <memory>
#include <string>
#include <vector>

namespace tunelark {

// Exports one object on the session bus under a well-known name: every interface of the introspection
// data at one path, method calls and property reads and writes answered by a BusObject, and the
// object's signals sent. Without a session bus it logs one warning and stays off. Main thread only;
// requests arrive from the default main context.
class GDBusObjectServer : public BusSignals {
public:
    struct Export {
        std::string busName;
        std::string objectPath;
        std::string introspectionXml;  // a <node> with the interfaces
    };

    // The object must outlive the server. The name is asked for at once and owned once the main loop runs.
    GDBusObjectServer(Export what, BusObject& object);
    ~GDBusObjectServer() override;
    GDBusObjectServer(const GDBusObjectServer&) = delete;
    GDBusObjectServer& operator=(const GDBusObjectServer&) = delete;

    // Registered on the session bus (the name may still be on its way).
    bool registered() const { return !registrations_.empty(); }
    // The well-known name is ours.
    bool ownsName() const { return ownsName_; }

    void propertiesChanged(const std::string& interfaceName, const BusProperties& changed) override;
    void emitSignal(const std::string& interfaceName, const std::string& signal,
                    const std::vector<BusValue>& args) override;

private:
    friend struct GDBusObjectServerCallbacks;
    void emit(const char* interfaceName, const char* signal, GVariant* parameters);

    Export export_;
    BusObject& object_;
    GObjectPtr<GDBusConnection> connection_;
    DBusNodeInfoPtr nodeInfo_;
    std::vector<std::unique_ptr<ObjectRegistration>> registrations_;
    std::unique_ptr<BusNameOwnership> name_;  // last: given back before the registrations go
    bool ownsName_ = false;
};

}  // namespace tunelark
