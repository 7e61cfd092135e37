#include "host/engine/identify.h"

#include <algorithm>
#include <iterator>

#include "host/base/text.h"

namespace host {

namespace {

template <std::size_t size>
WideView ViewOf(const KorvaneChar (&units)[size]) {
  const WideView all(units, size);
  return all.substr(0, all.find(KorvaneChar{0}));
}

bool HasPoint(const TargetRecord& record) {
  return record.x != 0 || record.y != 0;
}

// The record with nothing but the one identification.
TargetRecord Only(const TargetRecord& record, Identification by) {
  TargetRecord only = record;
  if (by != Identification::ScreenPoint) {
    only.x = only.y = 0;
  }
  switch (by) {
    case Identification::AutomationId:
      only.identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
      break;
    case Identification::TreePath:
      only.identificationMethod = KORVANE_METHOD_TREE_PATH;
      break;
    case Identification::ScreenPoint:
      only.identificationMethod = KORVANE_METHOD_UNDECIDED;
  }
  return only;
}

bool IsRecorded(const TargetRecord& record, Identification by) {
  switch (by) {
    case Identification::AutomationId:
      return record.automationId[0] != 0;
    case Identification::TreePath:
      return record.pathLength >= 1;
    case Identification::ScreenPoint:
      break;
  }
  return HasPoint(record);
}

bool IsAnotherAtPoint(const TargetRecord& record) {
  TargetRecord there{};
  return captureTargetAtPoint(&there, record.x, record.y) == KORVANE_OK && !IsSameElement(record, there);
}

}  // namespace

const char* NameOf(Identification identification) {
  constexpr const char* kNames[] = {"AutomationId", "tree path", "screen point"};
  return kNames[static_cast<int>(identification)];
}

const char* MethodWordOf(Identification identification) {
  constexpr const char* kWords[] = {"automation-id", "tree-path", "undecided"};
  return kWords[static_cast<int>(identification)];
}

std::string Describe(const Attempt& attempt) {
  if (!attempt.recorded) {
    return "not recorded";
  }
  const char* outcome = !attempt.found ? "not found, " : attempt.another ? "another element, " : "found, ";
  return outcome + Milliseconds(attempt.milliseconds);
}

Attempt TryAlone(const TargetRecord& record, HWND window, Identification by) {
  Attempt attempt;
  attempt.by = by;
  attempt.recorded = IsRecorded(record, by);
  if (!attempt.recorded) {
    return attempt;
  }
  const TargetRecord only = Only(record, by);
  const double start = world::Now();
  attempt.found = verifyTarget(&only, window) == KORVANE_OK;
  attempt.milliseconds = world::Now() - start;
  attempt.another = attempt.found && by == Identification::ScreenPoint && IsAnotherAtPoint(record);
  // A remembered point would change what the next click does.
  clearElementCache();
  return attempt;
}

Resolution Resolve(const TargetRecord& record, HWND window, LibraryLog& log) {
  log.NewLines();
  Resolution resolution;
  const double start = world::Now();
  resolution.code = verifyTarget(&record, window);
  resolution.milliseconds = world::Now() - start;
  resolution.lines = log.NewLines();
  constexpr const char* kSuccess[] = {"SUCCESS with Method 0", "SUCCESS with Method 3", "SUCCESS with Method 2"};
  for (const std::string& line : resolution.lines) {
    for (std::size_t i = 0; i < std::size(kSuccess); ++i) {
      if (line.find(kSuccess[i]) != std::string::npos) {
        resolution.answeredBy = kIdentifications[i];
      }
    }
  }
  clearElementCache();
  log.NewLines();
  return resolution;
}

bool IsSameElement(const TargetRecord& left, const TargetRecord& right) {
  if (left.automationId[0] != 0 || right.automationId[0] != 0) {
    return ViewOf(left.automationId) == ViewOf(right.automationId);
  }
  if (left.pathLength != right.pathLength) {
    return false;
  }
  for (std::size_t i = 0; i < static_cast<std::size_t>(std::clamp(left.pathLength, 0, 20)); ++i) {
    // The window's own position among all windows changes when others come and go.
    const bool sameIndex = i == 0 || left.childIndices[i] == right.childIndices[i];
    if (!sameIndex || left.controlTypes[i] != right.controlTypes[i] ||
        ViewOf(left.classNames[i]) != ViewOf(right.classNames[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace host
