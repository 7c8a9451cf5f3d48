#pragma once
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tunelark {

class ByJsHandler;
class MainQueue;
struct BridgeOperations;
struct HandlerRow;

// Whether the operation runs within the handler or as a task on the main queue after it has returned.
enum class Run { Inline, Queued };

// A key read from a string-map body, with the text taken when the body lacks it. A key without such a
// text is left out of the values, and the operation decides what its absence means.
struct BodyKey {
    std::string_view key;
    std::optional<std::string_view> whenAbsent;
};

// Ignored bodies are never parsed; a string-map body must be a JSON object whose values are all strings.
struct BodyReader {
    bool readsStringMap = false;
    std::vector<BodyKey> keys;
};

// The console line written before anything else: the prefix, then the body's JSON text when withBody.
struct ConsoleLine {
    std::string_view prefix;
    bool withBody = true;
};

// The row's keys with their texts, defaults applied.
using BodyValues = std::map<std::string, std::string, std::less<>>;

// Turns the values into the call of one operation; an empty function when there is nothing to do (no
// operation, an empty seam, or values the operation cannot take, which it has logged).
using BindOperation = std::function<void()> (*)(const BridgeOperations&, const BodyValues&);

// Creates the handler object of the row's class.
using HandlerFactory = std::shared_ptr<ByJsHandler> (*)(const HandlerRow&, MainQueue&,
                                                        std::shared_ptr<const BridgeOperations>);

// One message of the page: its name, the handler class bound to it, how its body is read, how its
// operation runs, the console line it writes and the operation it invokes.
struct HandlerRow {
    std::string_view messageName;
    HandlerFactory create;
    BodyReader body;
    Run run = Run::Inline;
    std::optional<ConsoleLine> console;  // nothing: the message writes no line
    BindOperation operation;
};

}  // namespace tunelark
