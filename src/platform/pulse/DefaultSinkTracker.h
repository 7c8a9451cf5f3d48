#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

// A stable id for a sink and its active port (32-bit FNV-1a); never 0, which means "unknown". A sink
// without ports has the id of its name alone.
std::uint32_t outputDeviceIdForSink(std::string_view sinkName, std::string_view portName = {});

// What the sound server says about one sink.
struct SinkInfo {
    std::string name;
    std::uint32_t index = 0;
    std::string activePort;  // empty when the sink has no ports
};

// The questions the tracker puts to the sound server; each answer comes back later with its ticket.
class SinkQuestions {
public:
    virtual ~SinkQuestions() = default;
    virtual void askServerInfo(std::uint64_t ticket) = 0;
    virtual void askSinkInfo(std::uint64_t ticket, const std::string& sinkName) = 0;
};

// The default sink and its active port as one id, followed through the server's events: the server
// info names the default sink, the sink's own info gives its active port (headphones plugged in switch
// the port and keep the sink). Only the newest question of each kind may be answered, so a late answer
// never overwrites a newer one. Plain logic, driven by the libpulse plumbing or by a test.
class DefaultSinkTracker {
public:
    explicit DefaultSinkTracker(SinkQuestions& questions) : questions_(questions) {}

    // Connected, or the server's settings changed: the default sink may be another.
    void serverChanged();
    // A sink appeared, changed (its active port, among others) or went away.
    void sinkChanged(std::uint32_t index);
    // The connection is gone: the device is unknown until it is back.
    void disconnected();
    // An empty name: the server has no default sink.
    void serverInfoAnswered(std::uint64_t ticket, const std::string& defaultSinkName);
    // Nothing when the server has no sink of that name.
    void sinkInfoAnswered(std::uint64_t ticket, const std::optional<SinkInfo>& sink);

    std::uint32_t id() const { return id_; }
    // Called after each change of the id.
    void setOnIdChanged(std::function<void()> idChanged) { idChanged_ = std::move(idChanged); }
    const std::string& sinkName() const { return sinkName_; }
    const std::string& portName() const { return portName_; }

private:
    void askSinkInfo();
    void publish(const std::string& sinkName, const std::string& portName);

    SinkQuestions& questions_;
    std::uint64_t lastTicket_ = 0;
    std::uint64_t serverTicket_ = 0;  // the question whose answer counts; 0: none
    std::uint64_t sinkTicket_ = 0;
    std::string defaultName_;  // as the server last named it; its port may still be on its way
    std::optional<std::uint32_t> defaultIndex_;
    std::string sinkName_;
    std::string portName_;
    std::uint32_t id_ = 0;
    std::function<void()> idChanged_;
};

}  // namespace tunelark
