#pragma once
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

namespace tunelark::test {

// Reads a page-call script of the form native code emits, `name("text", ...);`, giving the texts the page receives,
// or nothing for any other shape (a literal ended early, code after the call, a raw line break or separator): what
// an injection looks like. Literals are read as JSON strings, whose escapes mean the same in script.
struct JsCallReader {
    struct Call {
        std::string function;
        std::vector<std::string> arguments;
    };
    static std::optional<Call> read(std::string_view script) {
        const auto open = script.find('(');
        const auto has = [script](std::string_view part) { return script.find(part) != script.npos; };
        if (open == 0 || open == script.npos || !script.ends_with(");") || has("\n") || has("\r") ||
            has("\xE2\x80\xA8") || has("\xE2\x80\xA9"))
            return std::nullopt;
        Call call{std::string(script.substr(0, open)), {}};
        const std::string inner(script.substr(open + 1, script.size() - open - 3));
        const auto list = nlohmann::json::parse("[" + inner + "]", nullptr, false);
        const auto isName = [](unsigned char c) { return std::isalnum(c) || c == '_'; };
        if (!list.is_array() || list.empty() || !std::ranges::all_of(list, &nlohmann::json::is_string) ||
            !std::ranges::all_of(call.function, isName))
            return std::nullopt;
        call.arguments = list.get<std::vector<std::string>>();
        return call;
    }
};

}  // namespace tunelark::test
