#include "platform/gdbus/GDBusObjectServer.h"

#include "platform/gdbus/GVariantValues.h"
#include "platform/glib/GuardedCall.h"

namespace tunelark {

namespace {

constexpr const char* kFailed = "org.freedesktop.DBus.Error.Failed";
constexpr const char* kInvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char* kUnknownProperty = "org.freedesktop.DBus.Error.UnknownProperty";

void setBusError(GError** error, const BusError& busError) {
    g_dbus_error_set_dbus_error(error, busError.name.c_str(), busError.message.c_str(), nullptr);
}

}  // namespace

// The GDBus vtable: C entry points that never let an exception through.
struct GDBusObjectServerCallbacks {
    static void methodCall(GDBusConnection*, const gchar*, const gchar*, const gchar* interfaceName,
                           const gchar* method, GVariant* parameters, GDBusMethodInvocation* invocation,
                           gpointer data) noexcept {
        auto* server = static_cast<GDBusObjectServer*>(data);
        std::optional<BusError> error = BusError{kFailed, "the request could not be handled"};
        guardedCall("D-Bus method call", [&] {
            std::vector<BusValue> args;
            const gsize count = g_variant_n_children(parameters);
            for (gsize i = 0; i < count; ++i) {
                VariantPtr child(g_variant_get_child_value(parameters, i));
                auto value = fromGVariant(child.get());
                if (!value) {
                    error = BusError{kInvalidArgs, "argument of an unsupported type"};
                    return;
                }
                args.push_back(std::move(*value));
            }
            error = server->object_.callMethod(interfaceName, method, args);
        });
        if (error) {
            g_dbus_method_invocation_return_dbus_error(invocation, error->name.c_str(), error->message.c_str());
        } else {
            g_dbus_method_invocation_return_value(invocation, nullptr);
        }
    }

    static GVariant* getProperty(GDBusConnection*, const gchar*, const gchar*, const gchar* interfaceName,
                                 const gchar* name, GError** error, gpointer data) noexcept {
        auto* server = static_cast<GDBusObjectServer*>(data);
        GVariant* result = nullptr;
        guardedCall("D-Bus property read", [&] {
            if (auto value = server->object_.readProperty(interfaceName, name)) result = toGVariant(*value);
        });
        if (result == nullptr) setBusError(error, {kUnknownProperty, std::string("no property ") + name});
        return result;
    }

    static gboolean setProperty(GDBusConnection*, const gchar*, const gchar*, const gchar* interfaceName,
                                const gchar* name, GVariant* value, GError** error, gpointer data) noexcept {
        auto* server = static_cast<GDBusObjectServer*>(data);
        std::optional<BusError> failure = BusError{kFailed, "the value could not be set"};
        guardedCall("D-Bus property write", [&] {
            auto converted = fromGVariant(value);
            failure = converted ? server->object_.writeProperty(interfaceName, name, *converted)
                                : BusError{kInvalidArgs, "value of an unsupported type"};
        });
        if (failure) {
            setBusError(error, *failure);
            return FALSE;
        }
        return TRUE;
    }

    static void nameAcquired(GDBusConnection*, const gchar*, gpointer data) noexcept {
        static_cast<GDBusObjectServer*>(data)->ownsName_ = true;
    }

    static void nameLost(GDBusConnection*, const gchar* name, gpointer data) noexcept {
        auto* server = static_cast<GDBusObjectServer*>(data);
        server->ownsName_ = false;
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "the bus name %s is not ours", name);
    }

    static constexpr GDBusInterfaceVTable vtable{methodCall, getProperty, setProperty, {}};
};

GDBusObjectServer::GDBusObjectServer(Export what, BusObject& object) : export_(std::move(what)), object_(object) {
    GError* error = nullptr;
    connection_ = GObjectPtr<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error));
    ErrorPtr busError(error);
    if (!connection_) {
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "no session bus, %s stays off: %s", export_.busName.c_str(),
              busError ? busError->message : "unknown error");
        return;
    }
    nodeInfo_.reset(g_dbus_node_info_new_for_xml(export_.introspectionXml.c_str(), &error));
    ErrorPtr xmlError(error);
    if (!nodeInfo_) {
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "bad introspection data: %s", xmlError ? xmlError->message : "");
        return;
    }
    for (GDBusInterfaceInfo** interface = nodeInfo_->interfaces; interface && *interface; ++interface) {
        const guint id = g_dbus_connection_register_object(connection_.get(), export_.objectPath.c_str(), *interface,
                                                           &GDBusObjectServerCallbacks::vtable, this, nullptr, &error);
        ErrorPtr registerError(error);
        if (id == 0) {
            g_log(kLogDomain, G_LOG_LEVEL_WARNING, "cannot export %s: %s", (*interface)->name,
                  registerError ? registerError->message : "");
            registrations_.clear();
            return;
        }
        registrations_.push_back(std::make_unique<ObjectRegistration>(connection_.get(), id));
    }
    name_ = std::make_unique<BusNameOwnership>(g_bus_own_name_on_connection(
        connection_.get(), export_.busName.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
        GDBusObjectServerCallbacks::nameAcquired, GDBusObjectServerCallbacks::nameLost, this, nullptr));
}

GDBusObjectServer::~GDBusObjectServer() {
    name_.reset();
    registrations_.clear();
    // Replies and signals still on their way (the answer to a Quit) leave before the program ends.
    if (connection_) g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
}

void GDBusObjectServer::propertiesChanged(const std::string& interfaceName, const BusProperties& changed) {
    if (changed.empty()) return;
    GVariantBuilder values;
    g_variant_builder_init(&values, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : changed) g_variant_builder_add(&values, "{sv}", name.c_str(), toGVariant(value));
    emit("org.freedesktop.DBus.Properties", "PropertiesChanged",
         g_variant_new("(sa{sv}@as)", interfaceName.c_str(), &values, g_variant_new_strv(nullptr, 0)));
}

void GDBusObjectServer::emitSignal(const std::string& interfaceName, const std::string& signal,
                                   const std::vector<BusValue>& args) {
    GVariantBuilder tuple;
    g_variant_builder_init(&tuple, G_VARIANT_TYPE_TUPLE);
    for (const auto& arg : args) g_variant_builder_add_value(&tuple, toGVariant(arg));
    emit(interfaceName.c_str(), signal.c_str(), g_variant_builder_end(&tuple));
}

void GDBusObjectServer::emit(const char* interfaceName, const char* signal, GVariant* parameters) {
    VariantPtr owned = sinkVariant(parameters);
    if (!registered()) return;
    GError* error = nullptr;
    g_dbus_connection_emit_signal(connection_.get(), nullptr, export_.objectPath.c_str(), interfaceName, signal,
                                  owned.get(), &error);
    if (ErrorPtr failure{error}) {
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "cannot send %s.%s: %s", interfaceName, signal, failure->message);
    }
}

}  // namespace tunelark
