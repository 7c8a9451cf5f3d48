#pragma once
#include <glib.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>

namespace tunelark::test {

inline bool shell(const std::string& command) { return std::system(command.c_str()) == 0; }

// Runs the GLib main loop until done() holds or the limit passes; false on timeout. A ticker wakes the
// loop so that a deadline passes even when nothing else happens.
inline bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const guint ticker = g_timeout_add(10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (!done() && std::chrono::steady_clock::now() < deadline) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(ticker);
    return done();
}

}  // namespace tunelark::test
