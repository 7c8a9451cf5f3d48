#pragma once
#include <gio/gio.h>

#include <memory>
#include <utility>

namespace tunelark {

struct NodeInfoRelease {
    void operator()(GDBusNodeInfo* info) const noexcept { g_dbus_node_info_unref(info); }
};
using DBusNodeInfoPtr = std::unique_ptr<GDBusNodeInfo, NodeInfoRelease>;

struct VariantRelease {
    void operator()(GVariant* value) const noexcept { g_variant_unref(value); }
};
// Owns one reference; a floating value is sunk when taken over with sinkVariant.
using VariantPtr = std::unique_ptr<GVariant, VariantRelease>;
inline VariantPtr sinkVariant(GVariant* value) { return VariantPtr(value ? g_variant_ref_sink(value) : nullptr); }

struct ErrorRelease {
    void operator()(GError* error) const noexcept { g_error_free(error); }
};
using ErrorPtr = std::unique_ptr<GError, ErrorRelease>;

// One interface registered on a connection; unregistered on destruction. The connection must outlive it.
class ObjectRegistration {
public:
    ObjectRegistration() = default;
    ObjectRegistration(GDBusConnection* connection, guint id) : connection_(connection), id_(id) {}
    ObjectRegistration(ObjectRegistration&& other) noexcept
        : connection_(std::exchange(other.connection_, nullptr)), id_(std::exchange(other.id_, 0)) {}
    ObjectRegistration& operator=(ObjectRegistration&&) = delete;
    ObjectRegistration(const ObjectRegistration&) = delete;
    ObjectRegistration& operator=(const ObjectRegistration&) = delete;
    ~ObjectRegistration() {
        if (id_ != 0) g_dbus_connection_unregister_object(connection_, id_);
    }

private:
    GDBusConnection* connection_ = nullptr;
    guint id_ = 0;
};

// A well-known name asked for on a connection; given back on destruction, after which none of its
// callbacks runs.
class BusNameOwnership {
public:
    BusNameOwnership() = default;
    explicit BusNameOwnership(guint id) : id_(id) {}
    BusNameOwnership(const BusNameOwnership&) = delete;
    BusNameOwnership& operator=(const BusNameOwnership&) = delete;
    ~BusNameOwnership() {
        if (id_ != 0) g_bus_unown_name(id_);
    }

private:
    guint id_ = 0;
};

}  // namespace tunelark
