#pragma once
#include <glib.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace tunelark::test {

// Runs the default main context until done() holds or the limit passes; false on timeout. Sleeps in
// the poll between events, waking at least every 10 ms to look at done().
inline bool runMainLoopUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    guint ticker = g_timeout_add(10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool reached = done();
    while (!reached && std::chrono::steady_clock::now() < deadline) {
        g_main_context_iteration(nullptr, TRUE);
        reached = done();
    }
    g_source_remove(ticker);
    return reached;
}

// Runs the main loop for a while: for "nothing more happens" checks.
inline void runMainLoopFor(std::chrono::milliseconds time) {
    runMainLoopUntil([] { return false; }, time);
}

inline bool shell(const std::string& command) { return std::system(command.c_str()) == 0; }

// A folder of generated audio files, made once per test suite.
class AudioFiles {
public:
    AudioFiles() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tl-audio-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    ~AudioFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }
    AudioFiles(const AudioFiles&) = delete;
    AudioFiles& operator=(const AudioFiles&) = delete;

    std::string path(const std::string& name) const { return dir_ + "/" + name; }

    // A sine tone encoded as MP3 (sox makes the tone, lame encodes it); empty when a tool failed.
    std::string tone(const std::string& name, double seconds, int hertz) {
        std::string wav = path(name + ".wav");
        std::string mp3 = path(name);
        bool made = shell("sox -q -n -r 44100 -c 2 '" + wav + "' synth " + std::to_string(seconds) + " sine " +
                          std::to_string(hertz) + " vol 0.5") &&
                    shell("lame --quiet -b 128 '" + wav + "' '" + mp3 + "'");
        std::filesystem::remove(wav);
        return made ? mp3 : "";
    }

    std::string bytes(const std::string& name, const std::string& content) {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    std::string randomBytes(const std::string& name, std::size_t size) {
        std::string content(size, '\0');
        std::uint32_t state = 12345;
        for (char& c : content) {
            state = state * 1664525u + 1013904223u;
            c = static_cast<char>(state >> 24);
        }
        return bytes(name, content);
    }

private:
    std::string dir_;
};

// Records mono 16-bit samples at 44.1 kHz from a sink's monitor for a while (parec, bounded by timeout).
inline std::vector<std::int16_t> recordMonitor(const std::string& sink, double seconds) {
    std::string command = "timeout " + std::to_string(seconds) + " parec -d " + sink +
                          ".monitor --raw --format=s16le --rate=44100 --channels=1 --latency-msec=20 2>/dev/null";
    std::vector<std::int16_t> samples;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return samples;
    std::int16_t buffer[4096];
    std::size_t got = 0;
    while ((got = fread(buffer, sizeof buffer[0], 4096, pipe)) > 0) samples.insert(samples.end(), buffer, buffer + got);
    pclose(pipe);
    return samples;
}

// The strength of one frequency in the samples (Goertzel).
inline double toneStrength(const std::vector<std::int16_t>& samples, double hertz, double sampleRate) {
    const double coefficient = 2 * std::cos(2 * M_PI * hertz / sampleRate);
    double previous = 0;
    double beforePrevious = 0;
    for (std::int16_t sample : samples) {
        double s = sample + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = s;
    }
    return previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
}

// The frequency between low and high (in steps of 2 Hz) with the most energy; 0 for silence.
inline double dominantFrequency(const std::vector<std::int16_t>& samples, double low = 100, double high = 2000) {
    double loudest = 0;
    for (std::int16_t s : samples) loudest = std::max(loudest, std::abs(static_cast<double>(s)));
    if (loudest < 500) return 0;
    double best = 0;
    double bestStrength = 0;
    for (double f = low; f <= high; f += 2) {
        double strength = toneStrength(samples, f, 44100);
        if (strength > bestStrength) {
            bestStrength = strength;
            best = f;
        }
    }
    return best;
}

}  // namespace tunelark::test
