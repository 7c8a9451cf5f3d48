// tunelark-lrc: reads a lyric file exactly as the player does and prints what the player would show.
#include "engine/lyrics/CharsetEnum.h"
#include "engine/lyrics/LrcTimeline.h"
#include "engine/lyrics/PreferredLanguage.h"
#include "platform/Localized.h"
#include "platform/TextCatalog.h"
#include "tools/lrc/LrcToolOptions.h"
#include "tools/lrc/LrcToolReport.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tunelark {
namespace {

constexpr const char* kVersion = "tunelark-lrc 0.1.0";
constexpr int kUnreadable = 1;
constexpr int kUndecodable = 2;  // also for usage errors

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// The engine writes its console lines to standard output. Here standard output must carry only the
// result, so the result gets its own copy of the real standard output and descriptor 1 becomes stderr.
class ResultOutput {
public:
    ResultOutput() {
        std::fflush(stdout);
        const int copy = ::dup(STDOUT_FILENO);
        if (copy < 0) return;
        stream_.reset(::fdopen(copy, "w"));
        if (!stream_) {
            ::close(copy);
            return;
        }
        if (::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) stream_.reset();
    }

    bool ready() const { return stream_ != nullptr; }
    void write(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stream_.get()); }
    // False when any of the result could not be written (a closed pipe, a full disk).
    bool finish() {
        const bool written = std::fflush(stream_.get()) == 0 && std::ferror(stream_.get()) == 0;
        return std::fclose(stream_.release()) == 0 && written;
    }

private:
    FilePtr stream_;
};

void complain(const std::string& message) {
    std::fprintf(stderr, "tunelark-lrc: %s\n", message.c_str());
}

std::optional<std::string> readWholeFile(const std::string& path) {
    const FilePtr file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        complain("cannot open " + path + ": " + std::strerror(errno));
        return std::nullopt;
    }
    std::string bytes;
    std::vector<char> buffer(1 << 16);
    std::size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), file.get())) > 0) bytes.append(buffer.data(), got);
    if (std::ferror(file.get())) {
        complain("cannot read " + path + ": " + std::strerror(errno));
        return std::nullopt;
    }
    return bytes;
}

int check(const LrcToolOptions& options, ResultOutput& out) {
    const std::optional<std::string> bytes = readWholeFile(options.file);
    if (!bytes) return kUnreadable;
    const std::string language = options.language ? *options.language : firstPreferredLanguage();
    const ChosenCharset chosen = chooseCharset(options.charset, language);
    const std::optional<std::string> text = decodeLyrics(*bytes, chosen.charset);
    if (!text) {
        std::fprintf(stderr, "Can not decode %s in charset %s\n", options.file.c_str(), chosen.shownName.c_str());
        return kUndecodable;
    }
    LrcTimeline timeline;
    const std::lock_guard lock(timeline.lock());
    timeline.parse(*text);
    out.write(options.json ? checkReportJson(chosen, timeline, options.positions)
                           : checkReportText(chosen, timeline, options.positions));
    return 0;
}

int detect(const LrcToolOptions& options, ResultOutput& out) {
    const std::optional<std::string> bytes = readWholeFile(options.file);
    if (!bytes) return kUnreadable;
    std::vector<std::string> names;
    for (int i = 0; i < kCharsetCount; ++i) {
        const auto charset = static_cast<CharsetEnum>(i);
        if (decodeLyrics(*bytes, charset)) names.emplace_back(charsetName(charset));
    }
    out.write(namesReport(names, options.json));
    return 0;
}

int list(const LrcToolOptions& options, ResultOutput& out) {
    // Built from the catalogue directly: the player's list also logs every name, which is noise here.
    std::vector<std::string> names;
    for (int i = 0; i < kCharsetCount; ++i) names.emplace_back(charsetName(static_cast<CharsetEnum>(i)));
    out.write(namesReport(names, options.json));
    return 0;
}

int run(const LrcToolOptions& options, ResultOutput& out) {
    switch (options.mode) {
    case LrcToolOptions::Mode::Help:
        out.write(localized(kLrcToolUsage));
        return 0;
    case LrcToolOptions::Mode::Version:
        out.write(std::string(kVersion) + "\n");
        return 0;
    case LrcToolOptions::Mode::List:
        return list(options, out);
    case LrcToolOptions::Mode::Detect:
        return detect(options, out);
    case LrcToolOptions::Mode::Check:
        return check(options, out);
    }
    return kUndecodable;
}

}  // namespace
}  // namespace tunelark

int main(int argc, char** argv) {
    using namespace tunelark;
    std::error_code error;
    auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error && argc > 0) executable = argv[0];
    setUpTranslations(executable, false);
    ResultOutput out;
    if (!out.ready()) {
        complain(std::string("cannot set up standard output: ") + std::strerror(errno));
        return kUnreadable;
    }
    const std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
    const ParsedLrcToolOptions parsed = parseLrcToolOptions(args);
    if (!parsed.options) {
        complain(parsed.error);
        return kUndecodable;
    }
    const int status = run(*parsed.options, out);
    if (!out.finish()) {
        complain(std::string("cannot write the result: ") + std::strerror(errno));
        return status == 0 ? kUnreadable : status;
    }
    return status;
}
