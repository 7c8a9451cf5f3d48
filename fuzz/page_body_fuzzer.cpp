// Any body sent to each of the 26 page-message handlers. The arguments each operation should get are read here
// from the keys and defaults its row declares, with the JSON library and the C library's number parsers.
#include "FuzzChecks.h"
#include "bridge/HandlerTable.h"
#include "fakes/FakeMainQueue.h"
#include "fakes/FakePageView.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <locale.h>
#include <sstream>

using namespace tunelark;
using Arguments = std::vector<std::string>;
static std::vector<Arguments> calls;

static std::string text(const std::string& value) { return value; }
static std::string text(double value) { return (std::ostringstream() << std::hexfloat << value).str(); }

// Nothing when the operation should not run; "range" for a percent beyond a double (a finite seek or none).
static std::optional<Arguments> expectedArguments(const HandlerRow& row, const nlohmann::json& body) {
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    Arguments values;
    for (const BodyKey& key : row.body.keys) {
        const auto found = body.find(key.key);
        if (found == body.end() && !key.whenAbsent) return std::nullopt;
        values.push_back(found != body.end() ? found->get<std::string>() : std::string(*key.whenAbsent));
    }
    errno = 0;
    for (std::string& value : values) {
        if (row.messageName != "nativeMoveItem") break;
        const std::size_t sign = value.starts_with('-') ? 1 : 0;  // a minus only before zero
        const long long index = std::strtoll(value.c_str(), nullptr, 10);
        const bool digits = value.size() > sign && value.find_first_not_of("0123456789", sign) == std::string::npos;
        if (!digits || errno || index < 0 || index > 32766) return std::nullopt;
        value = text(index + 1.0);  // the page's index as a play-list position
    }
    if (row.messageName == "nativeSetCurrentPercent") {  // no blank or plus in front, no hexadecimal, infinity or NaN
        char* end = nullptr;
        const double percent = strtod_l(values[0].c_str(), &end, c);
        const std::string& value = values[0];
        if (value.empty() || std::strchr(" \t\n\v\f\r+", value[0]) || end != value.c_str() + value.size() ||
            value.find_first_of(std::string("xXiInN\0", 7)) != std::string::npos) {
            return std::nullopt;
        }
        values[0] = errno == ERANGE ? "range" : text(percent);
    }
    return values;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = std::freopen("/dev/null", "w", stdout);  // millions of console lines help nobody
    static test::FakeMainQueue queue;
    static test::FakePageView page;
    const auto r = [](const auto&... arguments) { calls.push_back({text(arguments)...}); };
    static const auto handlers =
        registerHandlers(page, queue, BridgeOperations{r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r});
    static std::map<std::string_view, std::size_t> callsWithoutBody;
    fuzz::require(quiet && handlers.size() == 26 && handlers.size() == handlerTable().size(), "one handler per row");
    const std::string body(reinterpret_cast<const char*>(data), size);
    const auto json = nlohmann::json::parse(body, nullptr, false);
    bool stringMap = json.is_object();
    for (const auto& value : json) stringMap = stringMap && value.is_string();
    for (const auto& handler : handlers) {
        const HandlerRow& row = handler->row();
        calls.clear();
        handler->received(body);
        queue.drain();
        if (!row.body.readsStringMap) {
            const std::size_t count = callsWithoutBody.emplace(row.messageName, calls.size()).first->second;
            fuzz::require(calls.size() == count && count <= 1 && (!count || calls[0].empty()), "the body is ignored");
            continue;
        }
        const auto expected = stringMap ? expectedArguments(row, json) : std::nullopt;
        const auto wanted = expected ? std::vector<Arguments>{*expected} : std::vector<Arguments>{};
        const bool eitherWay = row.messageName == "nativeSetCurrentPercent" && wanted.size() == 1 && wanted[0][0] == "range";
        const bool finite = calls.empty() || std::isfinite(std::strtod(calls[0][0].c_str(), nullptr));
        fuzz::require(eitherWay ? calls.size() <= 1 && finite : calls == wanted, "the row's operation gets the body's values");
    }
    return 0;
}
