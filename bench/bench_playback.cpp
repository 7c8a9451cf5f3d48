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
#include <chrono>
#include <cstdio>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// A child process with its standard output on a pipe (or discarded); killed and reaped on destruction.
class Child {
public:
    Child(const std::vector<std::string>& argv, bool readOutput) {
        int fds[2] = {-1, -1};
        if (readOutput && pipe2(fds, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (readOutput) posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
        else posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        std::vector<char*> args;
        for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        if (posix_spawnp(&pid_, args[0], &actions, nullptr, args.data(), environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        if (readOutput) {
            close(fds[1]);
            out_ = fds[0];
            fcntl(out_, F_SETFL, O_NONBLOCK);
        }
    }
    ~Child() {
        stop(2.0);
        if (out_ >= 0) close(out_);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t pid() const { return pid_; }
    int output() const { return out_; }
    bool running() {
        if (pid_ <= 0) return false;
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == 0) return true;
        pid_ = -1;
        return false;
    }
    // SIGTERM, then SIGKILL after the grace time.
    void stop(double grace) {
        if (!running()) return;
        kill(pid_, SIGTERM);
        for (double end = now() + grace; now() < end && running();) usleep(20000);
        if (running()) kill(pid_, SIGKILL);
        if (pid_ > 0) waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
    int out_ = -1;
};

// The player's console lines, each stamped when it arrived.
struct ConsoleLines {
    std::string partial;
    std::vector<std::pair<double, std::string>> lines;

    void feed(const char* data, std::size_t size, double at) {
        partial.append(data, size);
        for (std::size_t end; (end = partial.find('\n')) != std::string::npos; partial.erase(0, end + 1))
            lines.emplace_back(at, partial.substr(0, end));
    }
    std::size_t count(const std::string& prefix) const {
        return std::count_if(lines.begin(), lines.end(), [&](const auto& l) { return l.second.rfind(prefix, 0) == 0; });
    }
    double lastTime(const std::string& prefix) const {
        for (auto it = lines.rbegin(); it != lines.rend(); ++it)
            if (it->second.rfind(prefix, 0) == 0) return it->first;
        return -1;
    }
};

// Mono 16-bit samples from the sink's monitor: when the last loud sample came, the first loud sample
// since arming, and the share of 10 ms blocks that held sound.
struct SinkMonitor {
    static constexpr int kRate = 44100;
    static constexpr int kLoud = 1000;
    static constexpr int kBlock = kRate / 100;
    std::string pending;
    double lastLoud = -1;
    double firstLoudArmed = -1;
    bool armed = false;
    long blocks = 0, loudBlocks = 0;
    int inBlock = 0;
    bool blockLoud = false;

    void feed(const char* data, std::size_t size, double at) {
        pending.append(data, size);
        const std::size_t samples = pending.size() / 2;
        for (std::size_t i = 0; i < samples; ++i) {
            std::int16_t s;
            std::memcpy(&s, pending.data() + 2 * i, 2);
            const bool loud = s > kLoud || s < -kLoud;
            if (loud) {
                // The newest sample arrived now; older ones in the chunk were rendered before it.
                const double when = at - double(samples - 1 - i) / kRate;
                lastLoud = when;
                if (armed && firstLoudArmed < 0) firstLoudArmed = when;
            }
            blockLoud = blockLoud || loud;
            if (++inBlock == kBlock) {
                ++blocks;
                loudBlocks += blockLoud ? 1 : 0;
                inBlock = 0;
                blockLoud = false;
            }
        }
        pending.erase(0, samples * 2);
    }
    void arm() {
        armed = true;
        firstLoudArmed = -1;
    }
};

// CPU seconds (utime + stime) of processes, from /proc.
double cpuSeconds(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const auto close = text.rfind(')');
    if (close == std::string::npos) return 0;
    std::istringstream fields(text.substr(close + 2));
    std::vector<std::string> f((std::istream_iterator<std::string>(fields)), std::istream_iterator<std::string>());
    if (f.size() < 13) return 0;
    return double(std::stoull(f[11]) + std::stoull(f[12])) / double(sysconf(_SC_CLK_TCK));
}

std::map<pid_t, pid_t> parentsOfAll() {
    std::map<pid_t, pid_t> parents;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream in(entry.path() / "stat");
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        const auto close = text.rfind(')');
        if (close == std::string::npos) continue;
        std::istringstream fields(text.substr(close + 2));
        std::string state;
        pid_t ppid = 0;
        fields >> state >> ppid;
        parents[std::stoi(name)] = ppid;
    }
    return parents;
}

std::set<pid_t> descendantsOf(pid_t root) {
    const auto parents = parentsOfAll();
    std::set<pid_t> found;
    for (bool grew = true; grew;) {
        grew = false;
        for (const auto& [pid, ppid] : parents)
            if ((ppid == root || found.count(ppid)) && found.insert(pid).second) grew = true;
    }
    return found;
}

// The Xvfb process serving this session's display, or 0.
pid_t xServerOf(const std::string& display) {
    for (const auto& [pid, ppid] : parentsOfAll()) {
        std::ifstream in("/proc/" + std::to_string(pid) + "/cmdline");
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::vector<std::string> args;
        for (std::size_t start = 0, end; start < text.size(); start = end + 1) {
            end = text.find('\0', start);
            if (end == std::string::npos) end = text.size();
            args.push_back(text.substr(start, end - start));
        }
        if (!args.empty() && fs::path(args[0]).filename() == "Xvfb" &&
            std::find(args.begin(), args.end(), display) != args.end())
            return pid;
    }
    return 0;
}

// Proportional set size in MiB over processes.
double pssMiB(const std::vector<pid_t>& pids) {
    double kib = 0;
    for (pid_t pid : pids) {
        std::ifstream in("/proc/" + std::to_string(pid) + "/smaps_rollup");
        for (std::string line; std::getline(in, line);)
            if (line.rfind("Pss:", 0) == 0) kib += std::atof(line.c_str() + 4);
    }
    return kib / 1024;
}

struct CpuSnapshot {
    double player = 0, web = 0, x = 0, at = 0;
};

class Bench {
public:
    Bench(fs::path build, double phaseSeconds, int plays)
        : build_(std::move(build)), phase_(phaseSeconds), plays_(plays) {}

    int run();

private:
    bool prepare();
    bool startPlayer();
    // Reads the player's and the monitor's pipes until the deadline or until done() holds.
    bool pumpUntil(double deadline, const std::function<bool()>& done = [] { return false; });
    bool xdotool(const std::vector<std::string>& args);
    std::string capture(const std::vector<std::string>& argv);
    double timeFirstSound(const std::string& keys);
    CpuSnapshot snapshot();
    void report(const char* what, const CpuSnapshot& from, const CpuSnapshot& to, bool playing);

    fs::path build_;
    double phase_;
    int plays_;
    fs::path work_;
    std::unique_ptr<Child> player_;
    std::unique_ptr<Child> monitor_;
    ConsoleLines console_;
    SinkMonitor sink_;
    std::set<pid_t> web_;
    pid_t x_ = 0;
    std::string window_;
};

bool Bench::prepare() {
    char pattern[] = "/tmp/tl-bench-playback.XXXXXX";
    if (mkdtemp(pattern) == nullptr) return false;
    work_ = pattern;
    const double seconds = 4 * phase_ + 4 * plays_ + 60;  // the whole bench on one track each
    const char* poem[] = {"床前明月光", "疑是地上霜", "举头望明月", "低头思故乡"};
    std::vector<std::string> files;
    for (const auto& [name, hertz] : {std::pair{"a", 440}, std::pair{"b", 660}}) {
        const std::string base = (work_ / name).string();
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
        files.push_back(base + ".mp3");
        files.push_back(base + ".lrc");
    }
    std::string command = "'" + (build_ / "tests/tl-prepare-store").string() + "' '" +
                          (work_ / "data/Tunelark/Tunelark.sqlite").string() + "'";
    for (const auto& f : files) command += " '" + f + "'";
    return std::system((command + " >/dev/null").c_str()) == 0;
}

bool Bench::pumpUntil(double deadline, const std::function<bool()>& done) {
    char buffer[16384];
    while (!done()) {
        const double left = deadline - now();
        if (left <= 0) return false;
        pollfd fds[2] = {{player_->output(), POLLIN, 0}, {monitor_->output(), POLLIN, 0}};
        poll(fds, 2, std::max(1, std::min(20, int(left * 1000))));
        const double at = now();
        ssize_t n;
        while ((n = read(fds[0].fd, buffer, sizeof buffer)) > 0) console_.feed(buffer, std::size_t(n), at);
        while ((n = read(fds[1].fd, buffer, sizeof buffer)) > 0) sink_.feed(buffer, std::size_t(n), at);
    }
    return true;
}

// Runs a command to its end while the pipes are read, so that no line is stamped late.
bool Bench::xdotool(const std::vector<std::string>& args) {
    std::vector<std::string> argv{"xdotool"};
    argv.insert(argv.end(), args.begin(), args.end());
    Child child(argv, false);
    pumpUntil(now() + 10, [&] { return !child.running(); });
    return !child.running();
}

std::string Bench::capture(const std::vector<std::string>& argv) {
    Child child(argv, true);
    std::string text;
    char buffer[4096];
    for (double end = now() + 10; now() < end;) {
        const bool alive = child.running();
        ssize_t n;
        while ((n = read(child.output(), buffer, sizeof buffer)) > 0) text.append(buffer, std::size_t(n));
        if (!alive) break;
        pumpUntil(now() + 0.01);
    }
    return text;
}

bool Bench::startPlayer() {
    setenv("XDG_DATA_HOME", (work_ / "data").c_str(), 1);
    unsetenv("G_MESSAGES_DEBUG");  // the page log would cost CPU of its own
    monitor_ = std::make_unique<Child>(std::vector<std::string>{"parec", "-d", "tl_sink_a.monitor", "--raw",
                                                                "--format=s16le", "--rate=44100", "--channels=1",
                                                                "--latency-msec=5"},
                                       true);
    player_ = std::make_unique<Child>(std::vector<std::string>{(build_ / "tunelark").string()}, true);
    if (!pumpUntil(now() + 30, [&] { return console_.count("showWindow") > 0; })) return false;
    for (double end = now() + 10; window_.empty() && now() < end;) {
        window_ = capture({"xdotool", "search", "--onlyvisible", "--name", "^Tunelark$"});
        window_ = window_.substr(0, window_.find('\n'));
    }
    pumpUntil(now() + 3);  // let the page settle after its first showing
    web_ = descendantsOf(player_->pid());
    if (const char* display = std::getenv("DISPLAY")) x_ = xServerOf(display);
    return !window_.empty();
}

// Waits for a silent sink, presses the keys and returns the seconds from the console line to the first
// loud sample (negative when either never came).
double Bench::timeFirstSound(const std::string& keys) {
    pumpUntil(now() + 5, [&] { return sink_.lastLoud < 0 || now() - sink_.lastLoud > 0.5; });
    const std::size_t before = console_.count("Native Play Item By JS");
    sink_.arm();
    std::vector<std::string> args{"windowfocus", "--sync", window_, "key"};
    std::istringstream words(keys);
    for (std::string k; words >> k;) args.push_back(k);
    xdotool(args);
    const bool played = pumpUntil(now() + 5, [&] {
        return console_.count("Native Play Item By JS") > before && sink_.firstLoudArmed >= 0;
    });
    sink_.armed = false;
    if (!played) return -1;
    return sink_.firstLoudArmed - console_.lastTime("Native Play Item By JS");
}

CpuSnapshot Bench::snapshot() {
    CpuSnapshot s;
    s.at = now();
    s.player = cpuSeconds(player_->pid());
    for (pid_t pid : web_) s.web += cpuSeconds(pid);
    s.x = x_ > 0 ? cpuSeconds(x_) : 0;
    return s;
}

void Bench::report(const char* what, const CpuSnapshot& from, const CpuSnapshot& to, bool playing) {
    const double wall = to.at - from.at;
    const double perMinute = 60 / wall;
    const double player = (to.player - from.player) * perMinute;
    const double web = (to.web - from.web) * perMinute;
    const double x = (to.x - from.x) * perMinute;
    std::printf("%s, %.1f s%s:\n", what, wall, playing ? " of playback" : "");
    std::printf("  tunelark          %6.2f s CPU per minute (%5.2f %% of a core)\n", player, player / 0.6);
    std::printf("  web processes     %6.2f s CPU per minute (%5.2f %% of a core), %zu processes\n", web, web / 0.6,
                web_.size());
    std::printf("  together          %6.2f s CPU per minute (%5.2f %% of a core)\n", player + web,
                (player + web) / 0.6);
    if (x_ > 0) std::printf("  X server          %6.2f s CPU per minute (%5.2f %% of a core)\n", x, x / 0.6);
}

int Bench::run() {
    if (!prepare()) {
        std::fprintf(stderr, "bench_playback: could not make the tracks or the store (sox, lame, tl-prepare-store)\n");
        return 1;
    }
    if (!startPlayer()) {
        std::fprintf(stderr, "bench_playback: the player showed no window\n");
        return 1;
    }
    std::printf("bench_playback: 192 kbps MP3 to a PulseAudio null sink, main window visible, %.0f s a phase\n",
                phase_);

    auto idleFrom = snapshot();
    pumpUntil(now() + std::min(phase_, 10.0));
    report("idle, nothing playing", idleFrom, snapshot(), false);

    // The first play selects the first track; then pause, and play the other track.
    std::vector<double> delays;
    for (int i = 0; i < plays_; ++i) {
        if (i > 0) {
            xdotool({"windowfocus", "--sync", window_, "key", "space"});
            pumpUntil(now() + 1);
        }
        const double delay = timeFirstSound(i == 0 ? "Down Return" : (i % 2 ? "Down Return" : "Up Return"));
        if (delay >= 0) delays.push_back(delay);
        pumpUntil(now() + 1);
    }

    sink_.blocks = sink_.loudBlocks = 0;
    auto from = snapshot();
    pumpUntil(now() + phase_);
    auto to = snapshot();
    report("playing, lyrics window off", from, to, true);
    std::printf("  sound at the sink in %.0f %% of the phase\n", 100.0 * double(sink_.loudBlocks) / double(std::max(1L, sink_.blocks)));

    const auto geometry = capture({"xdotool", "getwindowgeometry", "--shell", window_});
    const int x = std::atoi(geometry.c_str() + geometry.find("X=") + 2);
    const int y = std::atoi(geometry.c_str() + geometry.find("Y=") + 2);
    // The page's lyrics switch and its "Two rows" button at 1200x600.
    xdotool({"mousemove", std::to_string(x + 1147), std::to_string(y + 390), "click", "1"});
    pumpUntil(now() + 0.5);
    xdotool({"mousemove", std::to_string(x + 1103), std::to_string(y + 427), "click", "1", "mousemove", "0", "0"});
    pumpUntil(now() + 2);
    const bool twoRows = console_.count("TurnLyricsOnByJsHandler {\"rowAmoutString\":\"towRows\"}") > 0;
    sink_.blocks = sink_.loudBlocks = 0;
    from = snapshot();
    pumpUntil(now() + phase_);
    to = snapshot();
    report(twoRows ? "playing, lyrics window on in two rows" : "playing, lyrics window NOT turned on (clicks missed)",
           from, to, true);
    std::printf("  sound at the sink in %.0f %% of the phase\n", 100.0 * double(sink_.loudBlocks) / double(std::max(1L, sink_.blocks)));
    std::vector<pid_t> all(web_.begin(), web_.end());
    all.push_back(player_->pid());
    std::printf("  memory: %.0f MiB PSS, tunelark and its web processes\n", pssMiB(all));

    std::sort(delays.begin(), delays.end());
    if (delays.empty()) {
        std::printf("first sound after nativePlayItem: never heard in %d plays\n", plays_);
    } else {
        std::printf("first sound after nativePlayItem (%zu of %d plays): min %.0f ms, median %.0f ms, max %.0f ms\n",
                    delays.size(), plays_, delays.front() * 1000, delays[delays.size() / 2] * 1000,
                    delays.back() * 1000);
    }
    player_->stop(10);
    monitor_->stop(1);
    std::error_code ignored;
    fs::remove_all(work_, ignored);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 30;
    const int plays = argc > 2 ? std::atoi(argv[2]) : 5;
    if (seconds <= 0 || plays <= 0 || std::getenv("DISPLAY") == nullptr) {
        std::fprintf(stderr, "usage: tests/support/with-session.sh %s [SECONDS_PER_PHASE] [PLAYS]\n", argv[0]);
        return 2;
    }
    std::error_code error;
    const fs::path build = fs::canonical("/proc/self/exe", error).parent_path();
    signal(SIGPIPE, SIG_IGN);
    return Bench(build, seconds, plays).run();
}
