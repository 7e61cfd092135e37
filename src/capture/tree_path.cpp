#include "capture/tree_path.h"

#include <algorithm>
#include <iterator>

#include "automation/automation_context.h"
#include "capture/level_condition.h"
#include "log/diagnostic_log.h"

namespace {

using WalkerPtr = ComPtr<IUIAutomationTreeWalker>;

constexpr WideView kDesktopClass = TEXT("#32769");

WalkerPtr ControlViewWalker() {
  WalkerPtr walker;
  if (const AutomationPtr automation = CurrentAutomation();
      !automation || FAILED(automation->get_ControlViewWalker(walker.Receive()))) {
    return {};
  }
  return walker;
}

ElementPtr ParentOf(IUIAutomationTreeWalker& walker, IUIAutomationElement* element) {
  ElementPtr parent;
  return FAILED(walker.GetParentElement(element, parent.Receive())) ? ElementPtr() : parent;
}

void RecordLevel(IUIAutomationElement* element, TargetRecord& target) {
  const int level = target.pathLength;
  CONTROLTYPEID controlType = 0;
  if (SUCCEEDED(element->get_CurrentControlType(&controlType))) {
    target.controlTypes[level] = controlType;
  }
  Bstr className;
  if (SUCCEEDED(element->get_CurrentClassName(className.Receive())) && className) {
    CopyCut(target.classNames[level], ViewOf(className.Get()));
  }
  className.Reset();
  target.childIndices[level] = GetChildIndex(element, target.controlTypes[level], target.classNames[level]);
  ++target.pathLength;
}

// From the element upwards: level 0 is the element itself.
void CollectLevels(IUIAutomationTreeWalker& walker, IUIAutomationElement* element, TargetRecord& target) {
  for (ElementPtr current(element); current && target.pathLength < KORVANE_MAX_PATH_LEVELS;) {
    RecordLevel(current.Get(), target);
    current = ParentOf(walker, current.Get());
  }
}

void ReverseLevels(TargetRecord& target) {
  for (int i = 0; i < target.pathLength / 2; ++i) {
    const int other = target.pathLength - 1 - i;
    std::swap(target.controlTypes[i], target.controlTypes[other]);
    std::swap(target.classNames[i], target.classNames[other]);
    std::swap(target.childIndices[i], target.childIndices[other]);
  }
}

// Moves every other level one place outwards.
template <class Value>
void RemoveFirst(Value (&levels)[KORVANE_MAX_PATH_LEVELS], int length) {
  std::rotate(levels, levels + 1, levels + length);
}

void RemoveDesktopLevel(TargetRecord& target) {
  LogLine("[BuildTreePath] Removed Desktop level from path");
  RemoveFirst(target.controlTypes, target.pathLength);
  RemoveFirst(target.childIndices, target.pathLength);
  for (int i = 1; i < target.pathLength; ++i) {
    std::swap(target.classNames[i - 1], target.classNames[i]);
  }
  const int last = --target.pathLength;
  target.controlTypes[last] = 0;
  target.childIndices[last] = 0;
  std::fill(std::begin(target.classNames[last]), std::end(target.classNames[last]), WCHAR{0});

  if (target.pathLength < 1) {
    LogLine("[BuildTreePath] WARNING: Path length is 0 after Desktop removal");
  } else if (target.controlTypes[0] != UIA_WindowControlTypeId) {
    LogLine("[BuildTreePath] WARNING: First level after Desktop removal is not a window (controlType=",
            target.controlTypes[0], ")");
  }
}

// The 1-based position of `element` in the array, counting only the entries that it hands out; 0 when it is not there.
int PositionIn(IUIAutomation& automation, IUIAutomationElementArray& siblings, int count,
               IUIAutomationElement* element) {
  int position = 0;
  for (int i = 0; i < count; ++i) {
    ElementPtr sibling;
    if (FAILED(siblings.GetElement(i, sibling.Receive())) || !sibling) {
      continue;
    }
    ++position;
    BOOL same = FALSE;
    if (SUCCEEDED(automation.CompareElements(sibling.Get(), element, &same)) && same) {
      return position;
    }
  }
  return 0;
}

}  // namespace

void ClearTreePath(TargetRecord& target) {
  target.pathLength = 0;
  std::fill(std::begin(target.controlTypes), std::end(target.controlTypes), 0);
  for (auto& className : target.classNames) {
    std::fill(std::begin(className), std::end(className), WCHAR{0});
  }
  std::fill(std::begin(target.childIndices), std::end(target.childIndices), 0);
}

bool BuildTreePath(IUIAutomationElement* element, TargetRecord* target) {
  if (element == nullptr || target == nullptr) {
    return false;
  }
  ClearTreePath(*target);
  WalkerPtr walker = ControlViewWalker();
  if (!walker) {
    LogLine("[BuildTreePath] FAILED: Unable to get tree walker");
    return false;
  }
  CollectLevels(*walker.Get(), element, *target);
  walker.Reset();
  ReverseLevels(*target);
  const bool hasDesktop = ViewWithin(target->classNames[0]) == kDesktopClass;
  if (hasDesktop) {
    RemoveDesktopLevel(*target);
  }
  LogLine("[BuildTreePath] SUCCESS: Built tree path with ", target->pathLength, " levels",
          hasDesktop ? " (Desktop level removed)" : "");
  return target->pathLength > 0;
}

int GetChildIndex(IUIAutomationElement* element, int controlType, const WCHAR* className) {
  const AutomationPtr automation = CurrentAutomation();
  if (element == nullptr || !automation) {
    LogLine("[GetChildIndex] ERROR: Invalid parameters");
    return 0;
  }
  const WideView shownClass = className == nullptr ? TEXT("(null)") : className;
  LogLine("[GetChildIndex] Finding index for control type: ", controlType, ", className: ", shownClass);
  WalkerPtr walker = ControlViewWalker();
  if (!walker) {
    LogLine("[GetChildIndex] ERROR: Failed to get tree walker");
    return 0;
  }
  const ElementPtr parent = ParentOf(*walker.Get(), element);
  if (!parent) {
    LogLine("[GetChildIndex] No parent element found, returning index 0");
    return 0;
  }
  LevelCondition level = CreateLevelCondition(*automation.Get(), controlType, className);
  switch (level.reached) {
    case LevelConditionStep::ControlType:
      LogLine("[GetChildIndex] ERROR: Failed to create control type condition");
      return 0;
    case LevelConditionStep::ClassName:
      LogLine("[GetChildIndex] ERROR: Failed to create class name condition");
      return 0;
    case LevelConditionStep::Combination:
      LogLine("[GetChildIndex] ERROR: Failed to create combined condition");
      return 0;
    case LevelConditionStep::Complete:
      break;
  }
  if (ViewOf(className).empty()) {
    LogLine("[GetChildIndex] Empty/null className, using controlType-only condition");
  }
  ComPtr<IUIAutomationElementArray> siblings;
  const HRESULT searched = parent->FindAll(TreeScope_Children, level.condition.Get(), siblings.Receive());
  level.condition.Reset();
  if (FAILED(searched) || !siblings) {
    LogLine("[GetChildIndex] ERROR: Failed to find children with matching control type and class name");
    return 0;
  }
  int count = 0;
  if (FAILED(siblings->get_Length(&count))) {
    LogLine("[GetChildIndex] ERROR: Failed to get filtered children count");
    return 0;
  }
  LogLine("[GetChildIndex] Found ", count, " siblings with controlType=", controlType, " and className=", shownClass);
  LogLine("[GetChildIndex] Parent has ", count, " children matching control type ", controlType, " and className '",
          shownClass, "'");
  const int position = PositionIn(*automation.Get(), *siblings.Get(), count, element);
  if (position == 0) {
    LogLine("[GetChildIndex] Target not found among siblings, returning 0");
    return 0;
  }
  LogLine("[GetChildIndex] Found target at index: ", position);
  return position;
}
