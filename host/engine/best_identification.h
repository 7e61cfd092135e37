// The identification that a target is best recorded with, chosen by trying each at once.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/identify.h"

namespace host {

struct BestIdentification {
  // As captured, with the path that leads from its window and the chosen method.
  TargetRecord record{};
  Identification by = Identification::ScreenPoint;
  std::string label;                  // for the step
  std::vector<Attempt> attempts;      // each identification alone, by kIdentifications
  std::vector<std::string> warnings;  // what whoever records should know, a sentence each
};

// An AutomationId that is the only one of its kind, before a path whose levels are all found again, before an
// AutomationId that looks generated; only the point when nothing else leads back to the same element. `captured` is
// what the library captured at its point, `window` what is there. A `wanted` method is kept, with warnings.
BestIdentification ChooseIdentification(const TargetRecord& captured, const world::Window& window,
                                        std::optional<int> wanted = std::nullopt);

}  // namespace host
