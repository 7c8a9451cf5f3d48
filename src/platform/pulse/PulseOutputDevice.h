#pragma once
#include "platform/AudioPlayer.h"
#include "platform/glib/GSourceHandles.h"
#include "platform/pulse/DefaultSinkTracker.h"
#include "platform/pulse/PulseHandles.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tunelark {

// The sound server's default sink and its active port, kept current by a subscription on GLib's
// default main context. Nothing here waits: the server's answers arrive as main-loop callbacks and are
// cached. Without a server (or while it is away) the id is 0 and a new connection is tried every
// retryInterval.
class PulseOutputDevice : public OutputDevice, private SinkQuestions {
public:
    // server: a server string as libpulse takes it; nothing for the desktop's default server.
    explicit PulseOutputDevice(std::optional<std::string> server = std::nullopt,
                               std::chrono::milliseconds retryInterval = std::chrono::seconds(2));
    ~PulseOutputDevice() override = default;
    PulseOutputDevice(const PulseOutputDevice&) = delete;
    PulseOutputDevice& operator=(const PulseOutputDevice&) = delete;

    unsigned int defaultOutputDevice() const override { return tracker_.id(); }
    // The server's events keep the id current, so every change is known as it comes.
    bool callOnChange(std::function<void()> changed) override {
        tracker_.setOnIdChanged(std::move(changed));
        return true;
    }
    const std::string& defaultSinkName() const { return tracker_.sinkName(); }
    const std::string& activePortName() const { return tracker_.portName(); }
    bool connected() const { return ready_; }

private:
    // A question on its way; replacing it cancels the old one, whose answer then never comes.
    struct Question {
        PulseOperationPtr operation;
        std::uint64_t ticket = 0;
    };

    static void onState(pa_context* context, void* self) noexcept;
    static void onEvent(pa_context* context, pa_subscription_event_type_t type, uint32_t index, void* self) noexcept;
    static void onServerInfo(pa_context* context, const pa_server_info* info, void* self) noexcept;
    static void onSinkInfo(pa_context* context, const pa_sink_info* info, int eol, void* self) noexcept;
    static gboolean onRetry(gpointer self) noexcept;

    void connect();
    void stateChanged();
    void askServerInfo(std::uint64_t ticket) override;
    void askSinkInfo(std::uint64_t ticket, const std::string& sinkName) override;

    std::optional<std::string> server_;
    std::chrono::milliseconds retryInterval_;
    DefaultSinkTracker tracker_{*this};
    PulseMainloopPtr mainloop_;
    PulseContextPtr context_;
    PulseOperationPtr subscribe_;
    Question serverInfo_;
    Question sinkInfo_;
    OneShotTimeout retry_;
    bool ready_ = false;
};

}  // namespace tunelark
