#pragma once
#include "bridge/BridgeOperations.h"
#include "bridge/HandlerRow.h"
#include "platform/MainQueue.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tunelark {

// A handler of one page message, driven by its row of the handler table: writes the console line,
// reads the body, and invokes the operation inline or queued. Main thread only.
class ByJsHandler {
public:
    ByJsHandler(const HandlerRow& row, MainQueue& queue, std::shared_ptr<const BridgeOperations> operations);
    virtual ~ByJsHandler() = default;
    ByJsHandler(const ByJsHandler&) = delete;
    ByJsHandler& operator=(const ByJsHandler&) = delete;

    // A message arrived; bodyJson is its body as JSON text ("null" when the page passed none).
    void received(const std::string& bodyJson) const;

    const HandlerRow& row() const { return row_; }

private:
    const HandlerRow& row_;
    MainQueue& queue_;
    std::shared_ptr<const BridgeOperations> operations_;
};

// A JSON object whose values are all strings; nothing for any other JSON value or for text that is not
// JSON. Numbers, booleans, null, arrays and nested objects as values all refuse the whole body.
std::optional<BodyValues> readStringMap(std::string_view bodyJson);

// The handler classes the page's messages are bound to. They differ only in the row they serve.
class ShowWindowByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class StartMoveWindowByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class StopMoveWindowByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class LogByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class DoCopyByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class AlertByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class ChangeMaxMinByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class ToAddMp3ByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class ClearPlayListByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class SetCharsetByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class MoveItemByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class RemoveByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PlayByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PlayItemByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PauseByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class ChangeModeByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PlayNextByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PlayPrevByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class SetCurrentTimeByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class TurnLyricsOnByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class TurnOneRowOrTowByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PlayNextLyricByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class PlayPrevLyricByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class SpeedUpByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };
class SpeedDownByJsHandler final : public ByJsHandler { using ByJsHandler::ByJsHandler; };

template <class Handler>
std::shared_ptr<ByJsHandler> makeHandler(const HandlerRow& row, MainQueue& queue,
                                         std::shared_ptr<const BridgeOperations> operations) {
    return std::make_shared<Handler>(row, queue, std::move(operations));
}

}  // namespace tunelark
