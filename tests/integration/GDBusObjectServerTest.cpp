#include "platform/gdbus/GDBusHandles.h"
#include "platform/gdbus/GDBusObjectServer.h"
#include "platform/gdbus/GVariantValues.h"
#include "platform/glib/GObjectHandles.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tunelark {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "org.tunelark.ServerTest";
constexpr const char* kPath = "/org/tunelark/ServerTest";
constexpr const char* kInterface = "org.tunelark.ServerTest";
constexpr const char* kXml = R"(<node>
  <interface name="org.tunelark.ServerTest">
    <method name="Do">
      <arg direction="in" name="Count" type="x"/>
      <arg direction="in" name="Where" type="o"/>
      <arg direction="in" name="Text" type="s"/>
    </method>
    <method name="Small"><arg direction="in" name="Value" type="i"/></method>
    <signal name="Ping"><arg name="Value" type="x"/></signal>
    <property name="Values" type="a{sv}" access="read"/>
    <property name="Text" type="s" access="read"/>
    <property name="Where" type="o" access="read"/>
    <property name="Missing" type="s" access="read"/>
    <property name="Flag" type="b" access="readwrite"/>
    <property name="Rate" type="d" access="readwrite"/>
  </interface>
</node>)";

bool spinUntil(const std::function<bool()>& done, std::chrono::seconds bound = 10s) {
    const auto deadline = std::chrono::steady_clock::now() + bound;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        g_main_context_iteration(nullptr, FALSE);
    }
    return true;
}

// Answers as the test sets it up and records what reached it.
class RecordingObject : public BusObject {
public:
    std::optional<BusError> callMethod(const std::string& interfaceName, const std::string& method,
                                       const std::vector<BusValue>& args) override {
        calls.push_back({interfaceName, method, args});
        return callError;
    }
    std::optional<BusValue> readProperty(const std::string&, const std::string& name) override {
        auto found = properties.find(name);
        if (found == properties.end()) return std::nullopt;
        return found->second;
    }
    std::optional<BusError> writeProperty(const std::string&, const std::string& name, const BusValue& value) override {
        writes.push_back({name, value});
        return writeError;
    }

    struct Call {
        std::string interfaceName;
        std::string method;
        std::vector<BusValue> args;
    };
    std::vector<Call> calls;
    std::vector<std::pair<std::string, BusValue>> writes;
    std::map<std::string, BusValue> properties;
    std::optional<BusError> callError;
    std::optional<BusError> writeError;
};

// A private message bus for each test, and a second connection that plays the desktop's part.
class GDBusObjectServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        bus_ = g_test_dbus_new(G_TEST_DBUS_NONE);
        g_test_dbus_up(bus_);
        GError* error = nullptr;
        client_ = GObjectPtr<GDBusConnection>::adopt(g_dbus_connection_new_for_address_sync(
            g_test_dbus_get_bus_address(bus_),
            GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                 G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error));
        ErrorPtr failure(error);
        ASSERT_TRUE(client_) << (failure ? failure->message : "");
        server_ = std::make_unique<GDBusObjectServer>(GDBusObjectServer::Export{kName, kPath, kXml}, object_);
        ASSERT_TRUE(server_->registered());
        ASSERT_TRUE(spinUntil([this] { return server_->ownsName(); }));
    }

    void TearDown() override {
        server_.reset();
        client_.reset();
        spinUntil([] { return !g_main_context_pending(nullptr); }, 2s);
        g_test_dbus_down(bus_);
        g_object_unref(bus_);
    }

    // A call from outside; the reply or the error's remote name.
    struct Reply {
        VariantPtr value;
        std::string errorName;
    };
    Reply callFromOutside(const char* interfaceName, const char* method, GVariant* parameters) {
        Reply reply;
        bool done = false;
        g_dbus_connection_call(
            client_.get(), kName, kPath, interfaceName, method, parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, 5000,
            nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                std::unique_ptr<std::pair<Reply*, bool*>> state(static_cast<std::pair<Reply*, bool*>*>(data));
                GError* error = nullptr;
                state->first->value.reset(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
                if (ErrorPtr failure{error}) {
                    GCharPtr name(g_dbus_error_get_remote_error(failure.get()));
                    state->first->errorName = name ? name.get() : failure->message;
                }
                *state->second = true;
            },
            new std::pair<Reply*, bool*>(&reply, &done));
        EXPECT_TRUE(spinUntil([&] { return done; }));
        return reply;
    }
    Reply get(const char* name) {
        return callFromOutside("org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", kInterface, name));
    }
    Reply set(const char* name, GVariant* value) {
        return callFromOutside("org.freedesktop.DBus.Properties", "Set",
                               g_variant_new("(ssv)", kInterface, name, value));
    }
    // The value inside a Get reply.
    static std::optional<BusValue> unboxed(const Reply& reply) {
        if (!reply.value) return std::nullopt;
        VariantPtr boxed(g_variant_get_child_value(reply.value.get(), 0));
        VariantPtr inner(g_variant_get_variant(boxed.get()));
        return fromGVariant(inner.get());
    }
    bool nameHasOwner() {
        Reply reply = callFromOutsideTo("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                        "NameHasOwner", g_variant_new("(s)", kName));
        gboolean owned = FALSE;
        if (reply.value) g_variant_get(reply.value.get(), "(b)", &owned);
        return owned;
    }
    Reply callFromOutsideTo(const char* name, const char* path, const char* interfaceName, const char* method,
                            GVariant* parameters) {
        GError* error = nullptr;
        Reply reply;
        reply.value.reset(g_dbus_connection_call_sync(client_.get(), name, path, interfaceName, method, parameters,
                                                      nullptr, G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, &error));
        if (ErrorPtr failure{error}) reply.errorName = failure->message;
        return reply;
    }

    GTestDBus* bus_ = nullptr;
    GObjectPtr<GDBusConnection> client_;
    RecordingObject object_;
    std::unique_ptr<GDBusObjectServer> server_;
};

TEST_F(GDBusObjectServerTest, MethodCallsArriveWithTheirArgumentsAndErrorsGoBackByName) {
    Reply ok = callFromOutside(kInterface, "Do", g_variant_new("(xos)", gint64{-7}, "/a/b", "h\xc3\xa9"));
    EXPECT_EQ(ok.errorName, "");
    ASSERT_EQ(object_.calls.size(), 1u);
    EXPECT_EQ(object_.calls[0].interfaceName, kInterface);
    EXPECT_EQ(object_.calls[0].method, "Do");
    EXPECT_EQ(object_.calls[0].args,
              (std::vector<BusValue>{std::int64_t{-7}, BusObjectPath{"/a/b"}, std::string("h\xc3\xa9")}));

    callFromOutside(kInterface, "Small", g_variant_new("(i)", gint32{-3}));
    ASSERT_EQ(object_.calls.size(), 2u);
    EXPECT_EQ(object_.calls[1].args, (std::vector<BusValue>{std::int64_t{-3}})) << "smaller integers arrive as x";

    object_.callError = BusError{"org.tunelark.Error.Refused", "not now"};
    EXPECT_EQ(callFromOutside(kInterface, "Do", g_variant_new("(xos)", gint64{1}, "/", "")).errorName,
              "org.tunelark.Error.Refused");
    EXPECT_EQ(callFromOutside(kInterface, "Do", g_variant_new("(s)", "wrong")).errorName,
              "org.freedesktop.DBus.Error.InvalidArgs")
        << "arguments of the wrong types never reach the object";
    EXPECT_EQ(object_.calls.size(), 3u);
}

TEST_F(GDBusObjectServerTest, PropertiesReadBackAsValidDBusValues) {
    const BusDict values{{"flag", true},
                         {"count", std::int64_t{200'000'000}},
                         {"rate", 1.5},
                         {"text", std::string("line one\nline two")},
                         {"id", BusObjectPath{"/org/tunelark/t1"}},
                         {"names", BusStrings{"a", "b"}}};
    object_.properties = {{"Values", values},
                          {"Text", std::string("bad \xff byte and \0 nul", 20)},
                          {"Where", BusObjectPath{"not a path"}}};

    EXPECT_EQ(unboxed(get("Values")), BusValue(values));
    EXPECT_EQ(unboxed(get("Text")), BusValue(std::string("bad \xef\xbf\xbd byte and \xef\xbf\xbd nul")));
    EXPECT_EQ(unboxed(get("Where")), BusValue(BusObjectPath{"/"}));
    EXPECT_EQ(get("Missing").errorName, "org.freedesktop.DBus.Error.UnknownProperty");

    Reply all = callFromOutside("org.freedesktop.DBus.Properties", "GetAll", g_variant_new("(s)", kInterface));
    ASSERT_TRUE(all.value);
    VariantPtr dict(g_variant_get_child_value(all.value.get(), 0));
    EXPECT_TRUE(g_variant_lookup_value(dict.get(), "Values", nullptr) != nullptr);
}

TEST_F(GDBusObjectServerTest, WritesArriveConvertedAndRefusalsAreErrors) {
    EXPECT_EQ(set("Flag", g_variant_new_boolean(TRUE)).errorName, "");
    EXPECT_EQ(set("Rate", g_variant_new_double(0.75)).errorName, "");
    ASSERT_EQ(object_.writes.size(), 2u);
    EXPECT_EQ(object_.writes[0], (std::pair<std::string, BusValue>{"Flag", true}));
    EXPECT_EQ(object_.writes[1], (std::pair<std::string, BusValue>{"Rate", 0.75}));

    object_.writeError = BusError{"org.freedesktop.DBus.Error.NotSupported", "no"};
    EXPECT_EQ(set("Rate", g_variant_new_double(3.0)).errorName, "org.freedesktop.DBus.Error.NotSupported");
    EXPECT_NE(set("Rate", g_variant_new_string("fast")).errorName, "") << "a value of the wrong type";
    EXPECT_NE(set("Text", g_variant_new_string("x")).errorName, "") << "a read-only property";
    EXPECT_EQ(object_.writes.size(), 3u);
}

TEST_F(GDBusObjectServerTest, SignalsReachSubscribers) {
    std::vector<std::string> received;
    auto onSignal = [](GDBusConnection*, const gchar*, const gchar*, const gchar* interfaceName, const gchar* signal,
                       GVariant* parameters, gpointer data) {
        GCharPtr printed(g_variant_print(parameters, FALSE));
        static_cast<std::vector<std::string>*>(data)->push_back(std::string(interfaceName) + "." + signal + " " +
                                                                 printed.get());
    };
    const guint subscription = g_dbus_connection_signal_subscribe(client_.get(), kName, nullptr, nullptr, kPath,
                                                                  nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onSignal,
                                                                  &received, nullptr);
    server_->propertiesChanged(kInterface, {{"Rate", 1.25}, {"Text", std::string("t")}});
    server_->propertiesChanged(kInterface, {});
    server_->emitSignal(kInterface, "Ping", {std::int64_t{5}});
    EXPECT_TRUE(spinUntil([&] { return received.size() >= 2; }));
    g_dbus_connection_signal_unsubscribe(client_.get(), subscription);

    ASSERT_EQ(received.size(), 2u) << "an empty change sends nothing";
    EXPECT_EQ(received[0], std::string("org.freedesktop.DBus.Properties.PropertiesChanged ('") + kInterface +
                               "', {'Rate': <1.25>, 'Text': <'t'>}, [])");
    EXPECT_EQ(received[1], std::string(kInterface) + ".Ping (5,)");
}

TEST_F(GDBusObjectServerTest, AServerThatGoesLeavesTheBusAndAnswersNoMore) {
    EXPECT_TRUE(nameHasOwner());
    server_.reset();
    EXPECT_TRUE(spinUntil([this] { return !nameHasOwner(); }));
    Reply reply = callFromOutsideTo(kName, kPath, kInterface, "Do", g_variant_new("(xos)", gint64{1}, "/", ""));
    EXPECT_NE(reply.errorName, "");
    EXPECT_TRUE(object_.calls.empty());
}

TEST(GDBusObjectServerWithoutBusTest, StaysOffAndSendsNothing) {
    const char* before = g_getenv("DBUS_SESSION_BUS_ADDRESS");
    const std::string saved = before ? before : "";
    g_setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/tunelark-no-bus", TRUE);
    {
        RecordingObject object;
        GDBusObjectServer server(GDBusObjectServer::Export{kName, kPath, kXml}, object);
        EXPECT_FALSE(server.registered());
        server.propertiesChanged(kInterface, {{"Rate", 1.0}});
        server.emitSignal(kInterface, "Ping", {std::int64_t{1}});
        EXPECT_FALSE(server.ownsName());
    }
    if (before) {
        g_setenv("DBUS_SESSION_BUS_ADDRESS", saved.c_str(), TRUE);
    } else {
        g_unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
}

}  // namespace
}  // namespace tunelark
