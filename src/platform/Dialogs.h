#pragma once
#include <optional>
#include <string>
#include <vector>

namespace tunelark {

struct OpenPanelRequest {
    std::string message;
    std::vector<std::string> extensions;  // matched in any letter case
    // When set, a second action with this label leads to choosing folders instead (the selected ones, or
    // the one shown when none is selected).
    std::string folderAction;
};

// Modal dialogs. Each call blocks in a nested main loop until the user answers. Main thread only.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    // A message with the single default button.
    virtual void alert(const std::string& message) = 0;
    // A message, informative text and buttons; returns the index of the pressed button (or -1 when the
    // dialog was closed without a button).
    virtual int ask(const std::string& message, const std::string& informative,
                    const std::vector<std::string>& buttons) = 0;
    // The platform's error presentation; true when the user resolved the error (never on this platform).
    virtual bool presentError(const std::string& description) = 0;
    // The open panel: several existing files (or folders, see OpenPanelRequest); absolute paths, or nothing
    // when cancelled.
    virtual std::optional<std::vector<std::string>> chooseFiles(const OpenPanelRequest& request) = 0;
};

class Clipboard {
public:
    virtual ~Clipboard() = default;
    // Replaces the clipboard's contents with plain text.
    virtual void setText(const std::string& text) = 0;
};

class UrlOpener {
public:
    virtual ~UrlOpener() = default;
    // Hands a URL to the desktop's default application; failures are the desktop's business.
    virtual void open(const std::string& url) = 0;
};

}  // namespace tunelark
