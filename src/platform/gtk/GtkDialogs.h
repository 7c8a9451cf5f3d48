#pragma once
#include "platform/Dialogs.h"

#include <functional>
#include <string>

typedef struct _GtkWindow GtkWindow;

namespace tunelark {

// Modal GTK dialogs, each run in a nested main loop (timers and the main queue keep going).
class GtkDialogs : public Dialogs {
public:
    // parent: the window the dialogs belong to, asked for at each dialog (it may not exist yet).
    explicit GtkDialogs(std::function<GtkWindow*()> parent);

    void alert(const std::string& message) override;
    int ask(const std::string& message, const std::string& informative,
            const std::vector<std::string>& buttons) override;
    bool presentError(const std::string& description) override;
    std::optional<std::vector<std::string>> chooseFiles(const OpenPanelRequest& request) override;

    // "*.[mM][pP]3" for "mp3": GTK's patterns are case-sensitive.
    static std::string anyCasePattern(const std::string& extension);

private:
    static constexpr int kFolderResponse = 1;  // the open panel's folder action

    std::function<GtkWindow*()> parent_;
};

}  // namespace tunelark
