#pragma once
#include "platform/Dialogs.h"

namespace tunelark {

// Hands URLs to the desktop's default application for their scheme, without waiting for it.
class DesktopUrlOpener : public UrlOpener {
public:
    void open(const std::string& url) override;
};

}  // namespace tunelark
