// Playback figures of the real player: the CPU time it uses per minute of playback with its main window
// visible, idle beside it, and the time from the page's "nativePlayItem" to the first sound at the
// PulseAudio null sink. Figures only; nothing passes or fails. (With the lyrics window on, and memory:
// bench/bench_floors.sh.)
//   cmake --build BUILD --target bench_playback tunelark tl-prepare-store
//   tests/support/with-session.sh BUILD/bench_playback [SECONDS_PER_PHASE (default 30)] [PLAYS (default 5)]
// It needs sox, lame, parec and xdotool. The play list holds two generated 192 kbps MP3s and their lyrics.
// CPU is utime + stime from /proc; "web" adds the web view's processes, "X" the session's Xvfb. The first
// sound is timed from the handler's console line to the first loud sample from the sink's monitor.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }
std::string slurp(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}
std::string proc(pid_t pid, const char* file) { return slurp("/proc/" + std::to_string(pid) + "/" + file); }
std::string capture(const std::string& command) {
    std::string text;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        for (int c; (c = std::fgetc(pipe)) != EOF;) text += char(c);
        pclose(pipe);
    }
    return text.substr(0, text.find('\n'));
}
// Starts a program with its standard output on a non-blocking pipe (*out), or discarded without out.
pid_t spawn(std::vector<std::string> argv, int* out = nullptr) {
    int fds[2] = {-1, -1};
    if (out && pipe2(fds, O_CLOEXEC) != 0) return -1;
    const pid_t pid = fork();
    if (pid == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(out ? fds[1] : null, 1), dup2(null, 2);
        std::vector<char*> args;
        for (auto& a : argv) args.push_back(a.data());
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    if (out) close(fds[1]), fcntl(*out = fds[0], F_SETFL, O_NONBLOCK);
    return pid;
}
bool exited(pid_t pid) { return pid <= 0 || waitpid(pid, nullptr, WNOHANG) != 0; }
void stop(pid_t pid, double grace) {  // SIGTERM, then SIGKILL after the grace time
    if (exited(pid)) return;
    kill(pid, SIGTERM);
    for (double end = now() + grace; now() < end; usleep(20000))
        if (exited(pid)) return;
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}
double cpuSeconds(pid_t pid) {  // utime + stime, the 14th and 15th fields
    const std::string stat = proc(pid, "stat");
    unsigned long long user = 0, system = 0;
    const auto close = stat.rfind(')');
    const char* fields = "%*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu";
    if (close == std::string::npos || std::sscanf(stat.c_str() + close + 2, fields, &user, &system) != 2) return 0;
    return double(user + system) / double(sysconf(_SC_CLK_TCK));
}
void addDescendants(pid_t pid, std::vector<pid_t>& found) {
    std::error_code error;
    for (const auto& task : fs::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
        std::istringstream children(slurp(task.path() / "children"));
        for (pid_t child; children >> child;) found.push_back(child), addDescendants(child, found);
    }
}

// The player's console lines, each stamped when it arrived, and the sink's monitor as mono 16-bit samples:
// when the last loud sample came, the first loud one since arming, and the share of 10 ms blocks with sound.
constexpr int kRate = 44100, kLoud = 1000, kBlock = kRate / 100;
pid_t player = -1, monitor = -1, xServer = 0;
int playerOut = -1, monitorOut = -1, inBlock = 0;
std::string partialLine, pendingSamples, window;
std::vector<std::pair<double, std::string>> lines;
std::vector<pid_t> web;
double lastLoud = -1, firstLoudArmed = -1;
bool armed = false, blockLoud = false;
long blocks = 0, loudBlocks = 0;

std::vector<double> linesStarting(const std::string& prefix) {
    std::vector<double> times;
    for (const auto& [at, line] : lines)
        if (line.rfind(prefix, 0) == 0) times.push_back(at);
    return times;
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

// Two tones, lyrics of a line a second, and the store that lists them.
bool prepare(const fs::path& build, const fs::path& work, int seconds) {
    std::string store = "'" + (build / "tests/tl-prepare-store").string() + "' '" +
                        (work / "data/Tunelark/Tunelark.sqlite").string() + "'";
    for (const auto& [name, hertz] : {std::pair{"a", 440}, std::pair{"b", 660}}) {
        const std::string base = (work / name).string();
        const std::string tone = std::to_string(seconds) + " sine " + std::to_string(hertz);
        if (std::system(("sox -V1 -n -r 44100 -c 2 -t wav - synth " + tone + " vol 0.5 | lame --quiet -b 192 - '" +
                         base + ".mp3'").c_str()) != 0) return false;
        std::ofstream lrc(base + ".lrc");
        for (int i = 0; i < seconds; ++i)
            lrc << '[' << i / 600 << i / 60 % 10 << ':' << i % 60 / 10 << i % 10 << ".00]第" << i + 1 << "行 床前明月光\n";
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
    if (!pumpUntil(now() + 30, [] { return !linesStarting("showWindow").empty(); })) return false;
    for (double end = now() + 10; window.empty() && now() < end; pumpUntil(now() + 0.1))
        window = capture("xdotool search --onlyvisible --name '^Tunelark$' 2>/dev/null");
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
    const std::size_t before = linesStarting(handled).size();
    armed = true, firstLoudArmed = -1;
    std::vector<std::string> args{"windowfocus", "--sync", window, "key"};
    args.insert(args.end(), keys.begin(), keys.end());
    xdotool(args);
    const bool played =
        pumpUntil(now() + 5, [&] { return linesStarting(handled).size() > before && firstLoudArmed >= 0; });
    armed = false;
    return played ? firstLoudArmed - linesStarting(handled).back() : -1;
}

// CPU per minute of a phase of the given length that starts now.
void measure(const char* what, double seconds, bool playing) {
    const auto cpu = [] {
        double pages = 0;
        for (pid_t pid : web) pages += cpuSeconds(pid);
        return std::vector<double>{now(), cpuSeconds(player), pages, xServer > 0 ? cpuSeconds(xServer) : 0};
    };
    blocks = loudBlocks = 0;
    const auto from = cpu();
    pumpUntil(now() + seconds);
    const auto to = cpu();
    const double wall = to[0] - from[0];
    std::printf("%s, %.1f s%s:\n", what, wall, playing ? " of playback" : "");
    const char* names[] = {"", "tunelark", "web processes", "X server"};
    for (int i = 1; i < (xServer > 0 ? 4 : 3); ++i) {
        const double perMinute = (to[i] - from[i]) * 60 / wall;
        std::printf("  %-17s %6.2f s CPU per minute (%5.2f %% of a core)\n", names[i], perMinute, perMinute / 0.6);
    }
    std::printf("  (%zu web processes)\n", web.size());
    if (playing) std::printf("  sound at the sink in %.0f %% of the phase\n", 100.0 * loudBlocks / std::max(1L, blocks));
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
    if (work.empty() || !prepare(build, work, int(3 * phase) + 4 * plays + 60)) {  // the whole bench on one track each
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
        if (i > 0) xdotool({"windowfocus", "--sync", window, "key", "space"}), pumpUntil(now() + 1);
        const double delay = timeFirstSound({i == 0 || i % 2 ? "Down" : "Up", "Return"});
        if (delay >= 0) delays.push_back(delay);
        pumpUntil(now() + 1);
    }
    measure("playing, lyrics window off", phase, true);

    std::sort(delays.begin(), delays.end());
    if (delays.empty()) std::printf("first sound after nativePlayItem: never heard in %d plays\n", plays);
    else std::printf("first sound after nativePlayItem (%zu of %d plays): min %.0f ms, median %.0f ms, max %.0f ms\n",
                     delays.size(), plays, 1000 * delays.front(), 1000 * delays[delays.size() / 2], 1000 * delays.back());
    stop(player, 10);
    stop(monitor, 1);
    fs::remove_all(work, error);
    return 0;
}
