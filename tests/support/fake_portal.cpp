// tl-fake-portal [COLOR-SCHEME]: the desktop's settings portal on the session bus, knowing only
// org.freedesktop.appearance color-scheme (without an argument it does not know the key). The test sets
// a new value with the method org.tunelark.test.Appearance.Set(u), which the portal announces with
// SettingChanged as a desktop does. Prints "ready" once it owns its name.
#include <gio/gio.h>

#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

constexpr const char* kInterfaces = R"(<node>
  <interface name="org.freedesktop.portal.Settings">
    <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
    <method name="ReadOne"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
    <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
    <property name="version" type="u" access="read"/>
  </interface>
  <interface name="org.tunelark.test.Appearance">
    <method name="Set"><arg type="u" direction="in"/></method>
  </interface>
</node>)";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";

std::optional<guint32> colorScheme;

void called(GDBusConnection* bus, const gchar*, const gchar*, const gchar*, const gchar* method,
            GVariant* parameters, GDBusMethodInvocation* invocation, gpointer) noexcept {
    if (std::strcmp(method, "Set") == 0) {
        guint32 value = 0;
        g_variant_get(parameters, "(u)", &value);
        colorScheme = value;
        g_dbus_connection_emit_signal(bus, nullptr, kPath, "org.freedesktop.portal.Settings", "SettingChanged",
                                      g_variant_new("(ssv)", "org.freedesktop.appearance", "color-scheme",
                                                    g_variant_new_uint32(value)),
                                      nullptr);
        g_dbus_method_invocation_return_value(invocation, nullptr);
        return;
    }
    const gchar* space = nullptr;
    const gchar* key = nullptr;
    g_variant_get(parameters, "(&s&s)", &space, &key);
    if (!colorScheme || std::strcmp(space, "org.freedesktop.appearance") != 0 || std::strcmp(key, "color-scheme") != 0) {
        g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.portal.Error.NotFound",
                                                   "Requested setting not found");
        return;
    }
    GVariant* value = g_variant_new_uint32(*colorScheme);
    // Read answers with the value inside one more variant, as the portal does.
    if (std::strcmp(method, "Read") == 0) value = g_variant_new_variant(value);
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(v)", value));
}

GVariant* property(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GError**,
                   gpointer) noexcept {
    return g_variant_new_uint32(2);
}

void busAcquired(GDBusConnection* bus, const gchar*, gpointer) noexcept {
    static const GDBusInterfaceVTable vtable{called, property, nullptr, {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    for (GDBusInterfaceInfo** info = node->interfaces; *info; ++info)
        g_dbus_connection_register_object(bus, kPath, *info, &vtable, nullptr, nullptr, nullptr);
    g_dbus_node_info_unref(node);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) colorScheme = guint32(std::strtoul(argv[1], nullptr, 10));
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_bus_own_name(G_BUS_TYPE_SESSION, "org.freedesktop.portal.Desktop", G_BUS_NAME_OWNER_FLAGS_NONE, busAcquired,
                   [](GDBusConnection*, const gchar*, gpointer) noexcept { g_print("ready\n"); },
                   [](GDBusConnection*, const gchar*, gpointer loop) noexcept {
                       g_printerr("tl-fake-portal: the name is taken or there is no bus\n");
                       g_main_loop_quit(static_cast<GMainLoop*>(loop));
                   },
                   loop, nullptr);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    return 1;
}
