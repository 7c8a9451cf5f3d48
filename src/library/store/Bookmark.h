#pragma once
#include "library/store/Entities.h"

#include <optional>
#include <string>

namespace tunelark {

// Persistent access to a file the user chose: a versioned record of the absolute path with the file's
// device and inode numbers, so a renamed file is still found (but reported stale).
struct ResolvedBookmark {
    std::optional<std::string> location;  // absolute path; nothing when the file cannot be found
    bool stale = true;
};

// Nothing when the file cannot be examined; the error's description goes to *error.
std::optional<Bytes> makeBookmark(const std::string& absolutePath, std::string* error = nullptr);
// Never throws: a foreign or damaged blob is a failed resolution.
ResolvedBookmark resolveBookmark(const Bytes& bookmark);
// Access is granted when the location is a regular file that can be opened for reading.
bool startAccessing(const std::string& location);
void stopAccessing(const std::string& location);

}  // namespace tunelark
