#pragma once
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tunelark {

// The lyrics of the current track: start times in seconds and the text of each line, in file order
// (never sorted). The owner holds lock() around Clear and Parse, and around every search and read.
class LrcTimeline {
public:
    std::mutex& lock() { return mutex_; }

    void clear();
    // Appends the entries of an LRC text; lines it cannot use are dropped silently. Linear in the size.
    void parse(std::string_view text);

    // First entry, in stored order, whose time minus 0.02 s lies after the position.
    std::optional<std::size_t> laterLine(double position) const;
    // The entry before the first one still to come; the last when none is to come; 0 before the first.
    std::optional<std::size_t> currentLine(double position) const;
    const std::string& lineText(std::size_t index) const { return wordLineArray[index]; }
    std::size_t size() const { return timeLineArray.size(); }
    bool empty() const { return timeLineArray.empty(); }

    std::optional<std::string> lrcString;
    std::vector<double> timeLineArray;
    std::vector<std::string> wordLineArray;

private:
    void parseLine(std::string_view line, std::string& scratch);
    void append(double time, std::string_view text);

    std::mutex mutex_;
};

}  // namespace tunelark
