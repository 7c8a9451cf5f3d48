#pragma once
#include "platform/AudioPlayer.h"
#include "platform/pulse/PulseHandles.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

// A stable id for a sink name (32-bit FNV-1a); never 0, which means "unknown".
std::uint32_t outputDeviceIdForSink(std::string_view sinkName);

// The sound server's default sink, kept current by a subscription on GLib's default main context.
// Nothing here waits: the server's answers arrive as main-loop callbacks and are cached. Without a
// server (or while it is away) the id is 0 and a new connection is tried every retryInterval.
class PulseOutputDevice : public OutputDevice {
public:
    // server: a server string as libpulse takes it; nothing for the desktop's default server.
    explicit PulseOutputDevice(std::optional<std::string> server = std::nullopt,
                               std::chrono::milliseconds retryInterval = std::chrono::seconds(2));
    ~PulseOutputDevice() override = default;
    PulseOutputDevice(const PulseOutputDevice&) = delete;
    PulseOutputDevice& operator=(const PulseOutputDevice&) = delete;

    unsigned int defaultOutputDevice() const override { return id_; }
    const std::string& defaultSinkName() const { return sinkName_; }
    bool connected() const { return ready_; }

private:
    static void onState(pa_context* context, void* self) noexcept;
    static void onEvent(pa_context* context, pa_subscription_event_type_t type, uint32_t index, void* self) noexcept;
    static void onServerInfo(pa_context* context, const pa_server_info* info, void* self) noexcept;
    static gboolean onRetry(gpointer self) noexcept;

    void connect();
    void stateChanged();
    void requestServerInfo();
    void setSink(const char* name);

    std::optional<std::string> server_;
    std::chrono::milliseconds retryInterval_;
    PulseMainloopPtr mainloop_;
    PulseContextPtr context_;
    PulseOperationPtr subscribe_;
    PulseOperationPtr serverInfo_;
    OneShotTimeout retry_;
    std::string sinkName_;
    unsigned int id_ = 0;
    bool ready_ = false;
};

}  // namespace tunelark
