#include "bridge/ByJsHandler.h"

#include "platform/Console.h"

#include <nlohmann/json.hpp>

namespace tunelark {

ByJsHandler::ByJsHandler(const HandlerRow& row, MainQueue& queue, std::shared_ptr<const BridgeOperations> operations)
    : row_(row), queue_(queue), operations_(std::move(operations)) {}

std::optional<BodyValues> readStringMap(std::string_view bodyJson) {
    const auto body = nlohmann::json::parse(bodyJson, nullptr, /*allow_exceptions=*/false);
    if (!body.is_object()) return std::nullopt;  // also what a parse error gives (discarded)
    BodyValues values;
    for (const auto& [key, value] : body.items()) {
        if (!value.is_string()) return std::nullopt;
        values.emplace(key, value.get<std::string>());
    }
    return values;
}

namespace {

BodyValues selectKeys(const BodyValues& body, const std::vector<BodyKey>& keys) {
    BodyValues values;
    for (const auto& key : keys) {
        if (auto found = body.find(key.key); found != body.end()) {
            values.emplace(found->first, found->second);
        } else if (key.whenAbsent) {
            values.emplace(std::string(key.key), std::string(*key.whenAbsent));
        }
    }
    return values;
}

}  // namespace

void ByJsHandler::received(const std::string& bodyJson) const {
    if (row_.console) {
        consoleLine(row_.console->withBody ? std::string(row_.console->prefix) + bodyJson
                                           : std::string(row_.console->prefix));
    }
    BodyValues values;
    if (row_.body.readsStringMap) {
        auto body = readStringMap(bodyJson);
        if (!body) return;  // another shape: dropped after its console line
        values = selectKeys(*body, row_.body.keys);
    }
    auto operation = row_.operation(*operations_, values);
    if (!operation) return;
    if (row_.run == Run::Queued) {
        queue_.post(std::move(operation));
    } else {
        operation();
    }
}

}  // namespace tunelark
