#pragma once
#include "platform/Dialogs.h"

namespace tunelark {

// The desktop's clipboard (the CLIPBOARD selection, what Ctrl+V pastes).
class DesktopClipboard : public Clipboard {
public:
    void setText(const std::string& text) override;
};

}  // namespace tunelark
