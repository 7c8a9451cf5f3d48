#pragma once
#include "platform/DesktopBus.h"

#include <optional>
#include <string>

typedef struct _GVariant GVariant;

namespace tunelark {

// A new floating GVariant of the value's own D-Bus type. Text that is not valid UTF-8 has its bad bytes
// (and NUL bytes) replaced; an object path that is not valid becomes "/".
GVariant* toGVariant(const BusValue& value);

// The value of a GVariant of type b, y, n, q, i, u, x, d, s, o, as or a{sv} (whose values are such
// scalars); nothing for other types and for a t above the int64 range.
std::optional<BusValue> fromGVariant(GVariant* value);

// A valid UTF-8 text with every NUL byte and invalid sequence replaced by U+FFFD.
std::string validUtf8(const std::string& text);

}  // namespace tunelark
