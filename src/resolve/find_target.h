// A captured record and its window, turned back into the live element.
#pragma once

#include "korvane/korvane.h"
#include "platform/owners.h"

namespace korvane {

// Tries the record's identifications in the order that its method sets; none when all fail. Logs every step.
ElementPtr FindTargetElement(const TargetRecord* target, HWND window);

}  // namespace korvane
