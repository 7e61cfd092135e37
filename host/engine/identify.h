// The identifications of a record, tried together as the library does, and each alone.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/library_log.h"
#include "host/world/world.h"
#include "korvane/korvane.h"

namespace host {

enum class Identification { AutomationId, TreePath, ScreenPoint };
inline constexpr Identification kIdentifications[] = {Identification::AutomationId, Identification::TreePath,
                                                      Identification::ScreenPoint};
const char* NameOf(Identification identification);
// How recordings write it.
const char* MethodWordOf(Identification identification);

struct Attempt {
  Identification by = Identification::AutomationId;
  bool recorded = false;  // the record has such an identification
  bool found = false;
  bool another = false;  // what is at the point is not what was recorded
  double milliseconds = 0;
};
std::string Describe(const Attempt& attempt);

Attempt TryAlone(const TargetRecord& record, HWND window, Identification by);

struct Resolution {
  int code = 0;
  std::optional<Identification> answeredBy;
  double milliseconds = 0;
  std::vector<std::string> lines;
};
// As the library would for an action; which identification answered is what its log tells.
Resolution Resolve(const TargetRecord& record, HWND window, LibraryLog& log);

// By AutomationId when both have one, else by the path.
bool IsSameElement(const TargetRecord& left, const TargetRecord& right);

}  // namespace host
