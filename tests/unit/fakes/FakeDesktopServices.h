#pragma once
#include "platform/Dialogs.h"

#include <string>
#include <vector>

namespace tunelark::test {

// A clipboard that keeps every text it was given.
class FakeClipboard : public Clipboard {
public:
    void setText(const std::string& text) override { texts.push_back(text); }
    std::vector<std::string> texts;
};

// A desktop that records the URLs it was asked to open.
class FakeUrlOpener : public UrlOpener {
public:
    void open(const std::string& url) override { opened.push_back(url); }
    std::vector<std::string> opened;
};

}  // namespace tunelark::test
