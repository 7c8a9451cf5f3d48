#pragma once
#include "engine/lyrics/CharsetEnum.h"
#include "engine/lyrics/LrcTimeline.h"

#include <span>
#include <string>
#include <vector>

namespace tunelark {

// The checker's result for one file: the chosen encoding, every entry, and the lines at each position.
std::string checkReportText(const ChosenCharset& chosen, const LrcTimeline& timeline, std::span<const double> positions);
// {"charset":...,"shown":...,"entries":[[time,text],...],"positions":[{"at":s,"current":k,"later":i},...]}
std::string checkReportJson(const ChosenCharset& chosen, const LrcTimeline& timeline, std::span<const double> positions);

// A list of encoding names: one a line, or one JSON array.
std::string namesReport(const std::vector<std::string>& names, bool json);

// The shortest text that reads back as the same number ("10", "62.5", "-60").
std::string formatSeconds(double seconds);

}  // namespace tunelark
