// Playback figures of the real player: the CPU time it uses per minute of playback with its main window
// visible (lyrics window off, then on in two rows), idle beside it, and the time from the page's
// "nativePlayItem" to the first sound at the PulseAudio null sink. Figures only; nothing passes or fails.
//
// Run it inside the private desktop session (Xvfb 1600x900, PulseAudio with null sinks):
//   cmake --build BUILD --target bench_playback tunelark tl-prepare-store
//   tests/support/with-session.sh BUILD/bench_playback [SECONDS_PER_PHASE (default 30)] [PLAYS (default 5)]
// It needs sox, lame, parec and xdotool (scripts/install-deps.sh --test). The player runs from the build
// folder the bench sits in, with a play list of two generated 192 kbps MP3s and their lyrics written by
// tl-prepare-store. CPU is utime + stime from /proc over each phase; "web" adds the web view's processes
// and "X" the Xvfb server of the session. The first sound is timed from the console line the handler
// writes to the first loud sample recorded from the sink's monitor; between plays the track is paused
// until the sink is silent, and the play is started from the keyboard (arrow, then Enter).
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

std::string slurp(const fs::path& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Starts a program with its standard output on a non-blocking pipe (*out), or discarded without out.
pid_t spawn(const std::vector<std::string>& argv, int* out = nullptr) {
    int fds[2] = {-1, -1};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (out && pipe2(fds, O_CLOEXEC) == 0) posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    else posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    if (out) {
        close(fds[1]);
        fcntl(*out = fds[0], F_SETFL, O_NONBLOCK);
    }
    return pid;
}
bool exited(pid_t pid) { return pid <= 0 || waitpid(pid, nullptr, WNOHANG) != 0; }
// SIGTERM, then SIGKILL after the grace time.
void stop(pid_t pid, double grace) {
    if (exited(pid)) return;
    kill(pid, SIGTERM);
    for (double end = now() + grace; now() < end;) {
        if (exited(pid)) return;
        usleep(20000);
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}
std::string capture(const std::string& command) {
    std::string text;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, n);
        pclose(pipe);
    }
    return text;
}

// CPU seconds (utime + stime) of a process, from /proc.
double cpuSeconds(pid_t pid) {
    const std::string text = slurp("/proc/" + std::to_string(pid) + "/stat");
    const auto close = text.rfind(')');
    if (close == std::string::npos) return 0;
    std::istringstream fields(text.substr(close + 2));
    std::vector<std::string> f((std::istream_iterator<std::string>(fields)), std::istream_iterator<std::string>());
    return f.size() < 13 ? 0 : double(std::stoull(f[11]) + std::stoull(f[12])) / double(sysconf(_SC_CLK_TCK));
}
void addDescendants(pid_t pid, std::vector<pid_t>& found) {
    std::error_code error;
    for (const auto& task : fs::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
        std::istringstream children(slurp(task.path() / "children"));
        for (pid_t child; children >> child;) found.push_back(child), addDescendants(child, found);
    }
}
// Proportional set size in MiB over processes.
double pssMiB(const std::vector<pid_t>& pids) {
    double kib = 0;
    for (pid_t pid : pids) {
        std::istringstream in(slurp("/proc/" + std::to_string(pid) + "/smaps_rollup"));
        for (std::string line; std::getline(in, line);)
            if (line.rfind("Pss:", 0) == 0) kib += std::atof(line.c_str() + 4);
    }
    return kib / 1024;
}

// The player's console lines, each stamped when it arrived, and the sink's monitor as mono 16-bit
// samples: when the last loud sample came, the first loud one since arming, and the share of 10 ms
// blocks that held sound.
constexpr int kRate = 44100, kLoud = 1000, kBlock = kRate / 100;
pid_t player = -1, monitor = -1, xServer = 0;
int playerOut = -1, monitorOut = -1;
std::string partialLine, pendingSamples, window;
std::vector<std::pair<double, std::string>> lines;
double lastLoud = -1, firstLoudArmed = -1;
bool armed = false, blockLoud = false;
long blocks = 0, loudBlocks = 0;
int inBlock = 0;
std::vector<pid_t> web;

std::size_t count(const std::string& prefix) {
    return std::count_if(lines.begin(), lines.end(), [&](const auto& l) { return l.second.rfind(prefix, 0) == 0; });
}
double lastTime(const std::string& prefix) {
    for (auto it = lines.rbegin(); it != lines.rend(); ++it)
        if (it->second.rfind(prefix, 0) == 0) return it->first;
    return -1;
}
void feedSamples(const char* data, std::size_t size, double at) {
    pendingSamples.append(data, size);
    const std::size_t samples = pendingSamples.size() / 2;
    for (std::size_t i = 0; i < samples; ++i) {
        std::int16_t s;
        std::memcpy(&s, pendingSamples.data() + 2 * i, 2);
        const bool loud = s > kLoud || s < -kLoud;
        if (loud) {  // the newest sample arrived now; older ones in the chunk were rendered before it
            lastLoud = at - double(samples - 1 - i) / kRate;
            if (armed && firstLoudArmed < 0) firstLoudArmed = lastLoud;
        }
        blockLoud = blockLoud || loud;
        if (++inBlock == kBlock) ++blocks, loudBlocks += blockLoud, inBlock = 0, blockLoud = false;
    }
    pendingSamples.erase(0, samples * 2);
}
// Reads the player's and the monitor's pipes until the deadline or until done() holds.
bool pumpUntil(double deadline, const std::function<bool()>& done = [] { return false; }) {
    char buffer[16384];
    while (!done()) {
        const double left = deadline - now();
        if (left <= 0) return false;
        pollfd fds[2] = {{playerOut, POLLIN, 0}, {monitorOut, POLLIN, 0}};
        poll(fds, 2, std::max(1, std::min(20, int(left * 1000))));
        const double at = now();
        for (ssize_t n; (n = read(playerOut, buffer, sizeof buffer)) > 0;) {
            partialLine.append(buffer, std::size_t(n));
            for (std::size_t end; (end = partialLine.find('\n')) != std::string::npos; partialLine.erase(0, end + 1))
                lines.emplace_back(at, partialLine.substr(0, end));
        }
        for (ssize_t n; (n = read(monitorOut, buffer, sizeof buffer)) > 0;) feedSamples(buffer, std::size_t(n), at);
    }
    return true;
}
// Runs xdotool to its end while the pipes are read, so that no line is stamped late.
void xdotool(std::vector<std::string> args) {
    args.insert(args.begin(), "xdotool");
    const pid_t pid = spawn(args);
    pumpUntil(now() + 10, [&] { return exited(pid); });
    stop(pid, 0);
}

bool prepare(const fs::path& build, const fs::path& work, double seconds) {
    const char* poem[] = {"床前明月光", "疑是地上霜", "举头望明月", "低头思故乡"};
    std::string store = "'" + (build / "tests/tl-prepare-store").string() + "' '" +
                        (work / "data/Tunelark/Tunelark.sqlite").string() + "'";
    for (const auto& [name, hertz] : {std::pair{"a", 440}, std::pair{"b", 660}}) {
        const std::string base = (work / name).string();
        const std::string make = "sox -q -n -r 44100 -c 2 '" + base + ".wav' synth " + std::to_string(int(seconds)) +
                                 " sine " + std::to_string(hertz) + " vol 0.5 && lame --quiet -b 192 '" + base +
                                 ".wav' '" + base + ".mp3' && rm '" + base + ".wav'";
        if (std::system(make.c_str()) != 0) return false;
        std::ofstream lrc(base + ".lrc");
        for (int i = 0; i < int(seconds); ++i) {
            char tag[32];
            std::snprintf(tag, sizeof tag, "[%02d:%02d.00]", i / 60, i % 60);
            lrc << tag << "第" << i + 1 << "行 " << poem[i % 4] << '\n';
        }
        store += " '" + base + ".mp3' '" + base + ".lrc'";
    }
    return std::system((store + " >/dev/null").c_str()) == 0;
}

bool startPlayer(const fs::path& build, const fs::path& work) {
    setenv("XDG_DATA_HOME", (work / "data").c_str(), 1);
    unsetenv("G_MESSAGES_DEBUG");  // the page log would cost CPU of its own
    monitor = spawn({"parec", "-d", "tl_sink_a.monitor", "--raw", "--format=s16le", "--rate=44100", "--channels=1",
                     "--latency-msec=5"}, &monitorOut);
    player = spawn({(build / "tunelark").string()}, &playerOut);
    if (!pumpUntil(now() + 30, [] { return count("showWindow") > 0; })) return false;
    for (double end = now() + 10; window.empty() && now() < end; pumpUntil(now() + 0.1)) {
        window = capture("xdotool search --onlyvisible --name '^Tunelark$' 2>/dev/null");
        window = window.substr(0, window.find('\n'));
    }
    pumpUntil(now() + 3);  // let the page settle after its first showing
    addDescendants(player, web);
    xServer = std::atoi(capture("for p in $(pgrep -x Xvfb); do tr '\\0' ' ' </proc/$p/cmdline | "
                                "grep -q \" $DISPLAY \" && echo $p; done").c_str());
    return !window.empty();
}

// Waits for a silent sink, presses the keys and returns the seconds from the console line to the first
// loud sample (negative when either never came).
double timeFirstSound(const std::vector<std::string>& keys) {
    pumpUntil(now() + 5, [] { return lastLoud < 0 || now() - lastLoud > 0.5; });
    const std::string handled = "Native Play Item By JS";
    const std::size_t before = count(handled);
    armed = true, firstLoudArmed = -1;
    std::vector<std::string> args{"windowfocus", "--sync", window, "key"};
    args.insert(args.end(), keys.begin(), keys.end());
    xdotool(args);
    const bool played = pumpUntil(now() + 5, [&] { return count(handled) > before && firstLoudArmed >= 0; });
    armed = false;
    return played ? firstLoudArmed - lastTime(handled) : -1;
}

// CPU per minute of a phase of the given length that starts now.
void measure(const char* what, double seconds, bool playing) {
    const auto cpu = [] {
        double ours = 0;
        for (pid_t pid : web) ours += cpuSeconds(pid);
        return std::array<double, 4>{now(), cpuSeconds(player), ours, xServer > 0 ? cpuSeconds(xServer) : 0};
    };
    blocks = loudBlocks = 0;
    const auto from = cpu();
    pumpUntil(now() + seconds);
    const auto to = cpu();
    const double wall = to[0] - from[0], tunelark = (to[1] - from[1]) * 60 / wall, pages = (to[2] - from[2]) * 60 / wall;
    const char* row = "  %-17s %6.2f s CPU per minute (%5.2f %% of a core)%s\n";
    std::printf("%s, %.1f s%s:\n", what, wall, playing ? " of playback" : "");
    std::printf(row, "tunelark", tunelark, tunelark / 0.6, "");
    std::printf(row, "web processes", pages, pages / 0.6, (", " + std::to_string(web.size()) + " processes").c_str());
    std::printf(row, "together", tunelark + pages, (tunelark + pages) / 0.6, "");
    if (xServer > 0) std::printf(row, "X server", (to[3] - from[3]) * 60 / wall, (to[3] - from[3]) * 100 / wall, "");
    if (playing) std::printf("  sound at the sink in %.0f %% of the phase\n", 100.0 * double(loudBlocks) / double(std::max(1L, blocks)));
}

}  // namespace

int main(int argc, char** argv) {
    const double phase = argc > 1 ? std::atof(argv[1]) : 30;
    const int plays = argc > 2 ? std::atoi(argv[2]) : 5;
    if (phase <= 0 || plays <= 0 || std::getenv("DISPLAY") == nullptr) {
        std::fprintf(stderr, "usage: tests/support/with-session.sh %s [SECONDS_PER_PHASE] [PLAYS]\n", argv[0]);
        return 2;
    }
    signal(SIGPIPE, SIG_IGN);
    std::error_code error;
    const fs::path build = fs::canonical("/proc/self/exe", error).parent_path();
    char pattern[] = "/tmp/tl-bench-playback.XXXXXX";
    const fs::path work = mkdtemp(pattern) ? pattern : "";
    if (work.empty() || !prepare(build, work, 4 * phase + 4 * plays + 60)) {  // the whole bench on one track each
        std::fprintf(stderr, "bench_playback: could not make the tracks or the store (sox, lame, tl-prepare-store)\n");
        return 1;
    }
    if (!startPlayer(build, work)) {
        std::fprintf(stderr, "bench_playback: the player showed no window\n");
        return 1;
    }
    std::printf("bench_playback: 192 kbps MP3 to a PulseAudio null sink, main window visible, %.0f s a phase\n", phase);
    measure("idle, nothing playing", std::min(phase, 10.0), false);

    // The first play selects the first track; then pause, and play the other track.
    std::vector<double> delays;
    for (int i = 0; i < plays; ++i) {
        if (i > 0) {
            xdotool({"windowfocus", "--sync", window, "key", "space"});
            pumpUntil(now() + 1);
        }
        const double delay = timeFirstSound({i == 0 || i % 2 ? "Down" : "Up", "Return"});
        if (delay >= 0) delays.push_back(delay);
        pumpUntil(now() + 1);
    }
    measure("playing, lyrics window off", phase, true);

    const auto geometry = capture("xdotool getwindowgeometry --shell " + window);
    const int x = std::atoi(geometry.c_str() + geometry.find("X=") + 2);
    const int y = std::atoi(geometry.c_str() + geometry.find("Y=") + 2);
    // The page's lyrics switch and its "Two rows" button at 1200x600.
    xdotool({"mousemove", std::to_string(x + 1147), std::to_string(y + 390), "click", "1"});
    pumpUntil(now() + 0.5);
    xdotool({"mousemove", std::to_string(x + 1103), std::to_string(y + 427), "click", "1", "mousemove", "0", "0"});
    pumpUntil(now() + 2);
    const bool twoRows = count("TurnLyricsOnByJsHandler {\"rowAmoutString\":\"towRows\"}") > 0;
    measure(twoRows ? "playing, lyrics window on in two rows" : "playing, lyrics window NOT turned on (clicks missed)",
            phase, true);
    std::vector<pid_t> all = web;
    all.push_back(player);
    std::printf("  memory: %.0f MiB PSS, tunelark and its web processes\n", pssMiB(all));

    std::sort(delays.begin(), delays.end());
    if (delays.empty()) std::printf("first sound after nativePlayItem: never heard in %d plays\n", plays);
    else
        std::printf("first sound after nativePlayItem (%zu of %d plays): min %.0f ms, median %.0f ms, max %.0f ms\n",
                    delays.size(), plays, delays.front() * 1000, delays[delays.size() / 2] * 1000, delays.back() * 1000);
    stop(player, 10);
    stop(monitor, 1);
    fs::remove_all(work, error);
    return 0;
}
