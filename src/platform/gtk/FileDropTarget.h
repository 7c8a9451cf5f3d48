#pragma once
#include "platform/glib/GObjectHandles.h"

#include <functional>
#include <string>
#include <vector>

typedef struct _GtkWidget GtkWidget;

namespace tunelark {

// Files dropped on a widget from another program (a file manager): their local paths go to a callback,
// and the widget's own drop handling never sees that drag, so a web view never navigates to a dropped
// file. Drags that start inside the program (the page's own row moves) pass through untouched. Main
// thread only; the widget must outlive this object.
class FileDropTarget {
public:
    FileDropTarget(GtkWidget* widget, std::function<void(std::vector<std::string> paths)> onFiles);
    FileDropTarget(const FileDropTarget&) = delete;
    FileDropTarget& operator=(const FileDropTarget&) = delete;

private:
    friend struct FileDropTargetSignals;

    GtkWidget* widget_;
    std::function<void(std::vector<std::string>)> onFiles_;
    bool awaitingData_ = false;  // our drop has asked for the file list
    std::vector<SignalConnection> connections_;
};

}  // namespace tunelark
