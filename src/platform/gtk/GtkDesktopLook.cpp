#include "platform/gtk/GtkDesktopLook.h"

#include "platform/glib/GuardedCall.h"

#include <gio/gio.h>
#include <gtk/gtk.h>

#include <cstring>
#include <string>

namespace tunelark {

namespace {

constexpr const char* kPortalName = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSettings = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";

// Read() wraps the value in one variant more than ReadOne() and the signal do.
std::optional<unsigned> colorSchemeOf(GVariant* value) {
    GVariant* inner = g_variant_ref(value);
    while (inner && g_variant_is_of_type(inner, G_VARIANT_TYPE_VARIANT)) {
        GVariant* next = g_variant_get_variant(inner);
        g_variant_unref(inner);
        inner = next;
    }
    std::optional<unsigned> result;
    if (g_variant_is_of_type(inner, G_VARIANT_TYPE_UINT32)) result = g_variant_get_uint32(inner);
    else if (g_variant_is_of_type(inner, G_VARIANT_TYPE_INT32)) result = unsigned(g_variant_get_int32(inner));
    g_variant_unref(inner);
    return result;
}

}  // namespace

struct GtkDesktopLookCalls {
    static gboolean applyToolkitDark(gpointer data) noexcept {
        auto* look = static_cast<GtkDesktopLook*>(data);
        look->applyDark_.ran();
        g_object_set(look->settings_, "gtk-application-prefer-dark-theme", look->toolkitDark_ ? TRUE : FALSE, nullptr);
        return G_SOURCE_REMOVE;
    }

    static void busGot(GObject*, GAsyncResult* result, gpointer data) noexcept {
        GError* error = nullptr;
        GDBusConnection* bus = g_bus_get_finish(result, &error);
        // Cancelled means the look is gone; no bus means no portal, and GTK's settings are all there is.
        if (!bus) {
            g_clear_error(&error);
            return;
        }
        static_cast<GtkDesktopLook*>(data)->busReady(bus);
    }

    static void answered(GObject* source, GAsyncResult* result, gpointer data) noexcept {
        GError* error = nullptr;
        GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (!reply) {
            const bool cancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
            // Portals before version 2 have Read only.
            const bool oldPortal = g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD);
            g_clear_error(&error);
            // Only a cancelled call may come after the look is gone.
            if (!cancelled && oldPortal) static_cast<GtkDesktopLook*>(data)->readPortal("Read");
            return;
        }
        GVariant* value = nullptr;
        g_variant_get(reply, "(v)", &value);
        const auto scheme = colorSchemeOf(value);
        g_variant_unref(value);
        g_variant_unref(reply);
        static_cast<GtkDesktopLook*>(data)->portalValue(scheme);
    }

    static void settingChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                               GVariant* parameters, gpointer data) noexcept {
        if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)"))) return;
        const gchar* space = nullptr;
        const gchar* key = nullptr;
        GVariant* value = nullptr;
        g_variant_get(parameters, "(&s&sv)", &space, &key, &value);
        if (std::strcmp(space, kNamespace) == 0 && std::strcmp(key, kKey) == 0) {
            static_cast<GtkDesktopLook*>(data)->portalValue(colorSchemeOf(value));
        }
        g_variant_unref(value);
    }

    static void themeChanged(GObject*, GParamSpec*, gpointer data) noexcept {
        static_cast<GtkDesktopLook*>(data)->changed();
    }
};

GtkDesktopLook::GtkDesktopLook()
    : settings_(gtk_settings_get_default()),
      cancellable_(GObjectPtr<GCancellable>::adopt(g_cancellable_new())) {
    gboolean prefersDark = FALSE;
    g_object_get(settings_, "gtk-application-prefer-dark-theme", &prefersDark, nullptr);
    userPrefersDark_ = prefersDark;
    connections_.emplace_back(settings_, "notify::gtk-theme-name", G_CALLBACK(&GtkDesktopLookCalls::themeChanged),
                              this);
    g_bus_get(G_BUS_TYPE_SESSION, cancellable_.get(), &GtkDesktopLookCalls::busGot, this);
}

GtkDesktopLook::~GtkDesktopLook() {
    g_cancellable_cancel(cancellable_.get());
    if (subscription_) g_dbus_connection_signal_unsubscribe(bus_.get(), subscription_);
}

void GtkDesktopLook::busReady(GDBusConnection* bus) {
    bus_ = GObjectPtr<GDBusConnection>::adopt(bus);
    subscription_ = g_dbus_connection_signal_subscribe(
        bus, kPortalName, kSettings, "SettingChanged", kPortalPath, kNamespace, G_DBUS_SIGNAL_FLAGS_NONE,
        &GtkDesktopLookCalls::settingChanged, this, nullptr);
    readPortal("ReadOne");
}

void GtkDesktopLook::readPortal(const char* method) {
    // Without a portal the bus answers at once; a portal the bus has to start may take a while, and
    // the page shows its own look until then.
    g_dbus_connection_call(bus_.get(), kPortalName, kPortalPath, kSettings, method,
                           g_variant_new("(ss)", kNamespace, kKey), G_VARIANT_TYPE("(v)"),
                           G_DBUS_CALL_FLAGS_NONE, 5000, cancellable_.get(), &GtkDesktopLookCalls::answered, this);
}

void GtkDesktopLook::portalValue(std::optional<unsigned> colorScheme) {
    portalColorScheme_ = colorScheme;
    changed();
}

void GtkDesktopLook::changed() {
    if (onChanged_) guardedCall("desktop look", onChanged_);
}

DesktopAppearance GtkDesktopLook::appearance() const {
    DesktopAppearance appearance;
    appearance.portalColorScheme = portalColorScheme_;
    appearance.toolkitPrefersDark = userPrefersDark_;
    if (const char* forced = g_getenv("GTK_THEME"); forced && *forced) {
        appearance.toolkitThemeName = forced;
    } else {
        gchar* name = nullptr;
        g_object_get(settings_, "gtk-theme-name", &name, nullptr);
        GCharPtr owned(name);
        if (owned) appearance.toolkitThemeName = owned.get();
    }
    return appearance;
}

void GtkDesktopLook::setOnChanged(std::function<void()> onChanged) { onChanged_ = std::move(onChanged); }

// GTK reloads its whole theme on this setting, a good part of start-up if done at once; a moment later
// the page's process is already starting beside it, and the window is not shown before the page asks.
void GtkDesktopLook::setToolkitDark(bool dark) {
    toolkitDark_ = dark;
    applyDark_.schedule(G_PRIORITY_DEFAULT, &GtkDesktopLookCalls::applyToolkitDark, this);
}

}  // namespace tunelark
