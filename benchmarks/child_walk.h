// The usual way of client libraries to find an element by a path: child by child, asking each for its properties.
#pragma once

#include "korvane/korvane.h"
#include "platform/owners.h"
#include "platform/wide_text.h"

namespace bench {

korvane::ElementPtr FindByWalkingChildren(IUIAutomation& automation, HWND window, const TargetRecord& target);

}  // namespace bench
