#include "platform/gdbus/GDBusHandles.h"
#include "platform/gdbus/GDBusObjectServer.h"
#include "platform/gdbus/GVariantValues.h"
#include "platform/glib/GObjectHandles.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

namespace tunelark {
namespace {

constexpr const char* kName = "org.tunelark.ServerTest";  // the bus name and the interface
constexpr const char* kPath = "/org/tunelark/ServerTest";
constexpr const char* kXml = R"(<node><interface name="org.tunelark.ServerTest">
  <method name="Do"/><property name="Text" type="s" access="read"/></interface></node>)";

// Refuses every call by name; its text is not valid UTF-8.
class RefusingObject : public BusObject {
public:
    std::optional<BusError> callMethod(const std::string&, const std::string&, const std::vector<BusValue>&) override {
        return BusError{"org.tunelark.Error.Refused", "not now"};
    }
    std::optional<BusValue> readProperty(const std::string&, const std::string&) override {
        return std::string("bad \xff byte and \0 nul", 20);
    }
    std::optional<BusError> writeProperty(const std::string&, const std::string&, const BusValue&) override {
        return BusError{"org.tunelark.Error.Refused", "not now"};
    }
};

// Runs the default main context, asleep while nothing is due, until done or 20 s have passed.
template <typename Done>
bool spinUntil(Done done) {
    bool late = false;
    auto lateNow = [](gpointer flag) { return *static_cast<bool*>(flag) = true, FALSE; };
    guint timer = g_timeout_add_seconds(20, lateNow, &late);
    while (!done() && !late) g_main_context_iteration(nullptr, TRUE);
    if (!late) g_source_remove(timer);
    return done();
}

// The reply as text, or the remote error's name. The call's own 5 s bound ends it within the spin's.
std::string call(GDBusConnection* client, const char* interfaceName, const char* method, GVariant* args) {
    GAsyncResult* result = nullptr;
    auto keep = [](GObject*, GAsyncResult* r, gpointer out) {
        *static_cast<GAsyncResult**>(out) = G_ASYNC_RESULT(g_object_ref(r));
    };
    g_dbus_connection_call(client, kName, kPath, interfaceName, method, args, nullptr, G_DBUS_CALL_FLAGS_NONE, 5000,
                           nullptr, keep, &result);
    spinUntil([&] { return result != nullptr; });
    GError* error = nullptr;
    VariantPtr reply(g_dbus_connection_call_finish(client, result, &error));
    g_object_unref(result);
    ErrorPtr failure(error);
    GCharPtr text(failure ? g_dbus_error_get_remote_error(failure.get()) : g_variant_print(reply.get(), FALSE));
    return text ? text.get() : failure->message;
}

// The server on a private bus, called from a second connection; the bus goes last and takes its daemon down.
TEST(GDBusObjectServerTest, ErrorsGoBackByNameAndTextsAreMadeValidUtf8) {
    auto bus = GObjectPtr<GTestDBus>::adopt(g_test_dbus_new(G_TEST_DBUS_NONE));
    g_test_dbus_up(bus.get());
    auto client = GObjectPtr<GDBusConnection>::adopt(g_dbus_connection_new_for_address_sync(
        g_test_dbus_get_bus_address(bus.get()),
        GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
    ASSERT_TRUE(client);
    RefusingObject object;
    auto server = std::make_unique<GDBusObjectServer>(GDBusObjectServer::Export{kName, kPath, kXml}, object);
    ASSERT_TRUE(spinUntil([&] { return server->ownsName(); }));

    EXPECT_EQ(call(client.get(), kName, "Do", nullptr), "org.tunelark.Error.Refused");
    EXPECT_EQ(call(client.get(), "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", kName, "Text")),
              "(<'bad \xef\xbf\xbd byte and \xef\xbf\xbd nul'>,)");
}

// A number an interface declares as 32-bit reaches the bus as i; plain integers stay x.
TEST(GVariantValuesTest, ThirtyTwoBitNumbersAreSentAsI) {
    VariantPtr value = sinkVariant(toGVariant(BusDict{{"n", BusInt32{-7}}, {"x", std::int64_t{7}}}));
    GCharPtr text(g_variant_print(value.get(), TRUE));
    EXPECT_STREQ(text.get(), "{'n': <-7>, 'x': <int64 7>}");
}

}  // namespace
}  // namespace tunelark
