#pragma once
#include <glib.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>

namespace tunelark::test {

// An ID3v2.3 tag holding the frames, and a picture frame of an APIC type, as a tagger writes cover art.
inline std::string pictureFrame(char apicType, const std::string& mimeType, const std::string& image) {
    const std::string body = '\0' + mimeType + '\0' + apicType + '\0' + image;
    const auto n = std::uint32_t(body.size());
    return "APIC" + std::string{char(n >> 24), char(n >> 16), char(n >> 8), char(n)} + std::string(2, '\0') + body;
}
inline std::string id3Tag(const std::string& frames) {
    const auto n = std::uint32_t(frames.size());
    return std::string("ID3\x03\0\0", 6) +
           std::string{char(n >> 21 & 0x7F), char(n >> 14 & 0x7F), char(n >> 7 & 0x7F), char(n & 0x7F)} + frames;
}

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
