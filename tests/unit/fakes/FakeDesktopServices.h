#pragma once
#include "platform/Dialogs.h"

#include <string>
#include <vector>

namespace tunelark::test {

// A desktop that records the URLs it was asked to open.
class FakeUrlOpener : public UrlOpener {
public:
    void open(const std::string& url) override { opened.push_back(url); }
    std::vector<std::string> opened;
};

}  // namespace tunelark::test
