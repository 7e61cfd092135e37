// Whether an AutomationId tells an element from all others in its window.
#pragma once

#include "host/world/world.h"
#include "korvane/korvane.h"

namespace host {

struct Uniqueness {
  std::size_t elements = 0;  // different ones seen in the window
  std::size_t same = 0;      // those of them with the record's AutomationId
};

// Looks at the window point by point for at most two seconds, as the library offers no list of elements: what is
// hidden, or too small to be met in that time, is not seen.
Uniqueness CountSameAutomationId(const TargetRecord& record, const world::Window& window);

}  // namespace host
