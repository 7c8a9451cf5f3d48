#pragma once
#include <glib.h>

#include <exception>
#include <utility>

namespace tunelark {

// The GLib log domain of everything Tunelark logs (G_MESSAGES_DEBUG=Tunelark shows the debug lines).
inline constexpr const char* kLogDomain = "Tunelark";

// Runs f for a C callback: an exception must never unwind through C frames, so it is logged and
// swallowed here.
template <typename F>
void guardedCall(const char* where, F&& f) noexcept {
    try {
        std::forward<F>(f)();
    } catch (const std::exception& e) {
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "%s: %s", where, e.what());
    } catch (...) {
        g_log(kLogDomain, G_LOG_LEVEL_WARNING, "%s: unknown exception", where);
    }
}

// Same, for callbacks that answer something; fallback when f threw.
template <typename R, typename F>
R guardedCall(const char* where, R fallback, F&& f) noexcept {
    R result = fallback;
    guardedCall(where, [&] { result = std::forward<F>(f)(); });
    return result;
}

}  // namespace tunelark
