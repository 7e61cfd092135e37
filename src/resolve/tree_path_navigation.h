// Following a recorded tree path from a window down to its element.
#pragma once

#include "korvane/korvane.h"
#include "platform/owners.h"

namespace korvane {

// Whether the record's tree path keeps its limits; the first fault is logged.
bool ValidateTreePathData(const TargetRecord* target);

// The element at the end of the path, or none, with the reason logged. A set cancelled flag ends it silently.
ElementPtr FindElementByTreePath(HWND window, const TargetRecord* target);

}  // namespace korvane
