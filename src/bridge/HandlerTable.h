#pragma once
#include "bridge/BridgeOperations.h"
#include "bridge/ByJsHandler.h"
#include "bridge/HandlerRow.h"
#include "platform/MainQueue.h"
#include "platform/PageView.h"

#include <memory>
#include <vector>

namespace tunelark {

// The page's 26 messages in registration order.
const std::vector<HandlerRow>& handlerTable();

// Registers one handler object per row with the page, in table order. The page keeps the objects alive;
// they are also returned in that order. The operations are copied: later changes to `operations` are
// not seen. Call before the page is requested; on a page that has them already, each name is refused.
std::vector<std::shared_ptr<const ByJsHandler>> registerHandlers(PageView& page, MainQueue& queue,
                                                                  const BridgeOperations& operations);

}  // namespace tunelark
