#include "capture/tree_path.h"

#include <algorithm>
#include <iterator>

#include "automation/automation_context.h"
#include "capture/level_condition.h"
#include "log/diagnostic_log.h"

namespace korvane {
namespace {

constexpr TaggedLog LogTreePathLine("[BuildTreePath] ");
constexpr TaggedLog LogChildIndexLine("[GetChildIndex] ");

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

template <std::size_t Size>
void RecordClassName(IUIAutomationElement* element, WCHAR (&field)[Size]) {
  Bstr className;
  if (SUCCEEDED(element->get_CurrentClassName(className.Receive())) && className) {
    CopyCut(field, ViewOf(className.Get()));
  }
}

void RecordLevel(IUIAutomationElement* element, TargetRecord& target) {
  const int level = target.pathLength;
  CONTROLTYPEID controlType = 0;
  if (SUCCEEDED(element->get_CurrentControlType(&controlType))) {
    target.controlTypes[level] = controlType;
  }
  RecordClassName(element, target.classNames[level]);
  target.childIndices[level] = GetChildIndex(element, target.controlTypes[level], target.classNames[level]);
  ++target.pathLength;
}

// From the element upwards: level 0 is the element itself. False when there is no walker.
bool CollectLevels(IUIAutomationElement* element, TargetRecord& target) {
  const WalkerPtr walker = ControlViewWalker();
  if (!walker) {
    return false;
  }
  for (ElementPtr current(element); current && target.pathLength < KORVANE_MAX_PATH_LEVELS;) {
    RecordLevel(current.Get(), target);
    current = ParentOf(*walker, current.Get());
  }
  return true;
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
  LogTreePathLine("Removed Desktop level from path");
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
    LogTreePathLine("WARNING: Path length is 0 after Desktop removal");
  } else if (target.controlTypes[0] != UIA_WindowControlTypeId) {
    LogTreePathLine("WARNING: First level after Desktop removal is not a window (controlType=", target.controlTypes[0],
                    ")");
  }
}

// The parent's children of the control type and, unless it is empty, the class name.
Outcome FindSiblings(IUIAutomation& automation, IUIAutomationElement& parent, int controlType, const WCHAR* className,
                     ElementArrayPtr& siblings) {
  ConditionPtr condition;
  if (const Outcome created = CreateLevelCondition(automation, controlType, className, condition); !created.IsOk()) {
    return created;
  }
  if (ViewOf(className).empty()) {
    LogChildIndexLine("Empty/null className, using controlType-only condition");
  }
  if (FAILED(parent.FindAll(TreeScope_Children, condition.Get(), siblings.Receive())) || !siblings) {
    return {KORVANE_FAILED, "Failed to find children with matching control type and class name"};
  }
  return KORVANE_OK;
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
  if (!CollectLevels(element, *target)) {
    LogTreePathLine("FAILED: Unable to get tree walker");
    return false;
  }
  ReverseLevels(*target);
  const bool hasDesktop = ViewWithin(target->classNames[0]) == kDesktopClass;
  if (hasDesktop) {
    RemoveDesktopLevel(*target);
  }
  LogTreePathLine("SUCCESS: Built tree path with ", target->pathLength, " levels",
                  hasDesktop ? " (Desktop level removed)" : "");
  return target->pathLength > 0;
}

int GetChildIndex(IUIAutomationElement* element, int controlType, const WCHAR* className) {
  const AutomationPtr automation = CurrentAutomation();
  if (element == nullptr || !automation) {
    LogChildIndexLine("ERROR: Invalid parameters");
    return 0;
  }
  const WideView shownClass = className == nullptr ? TEXT("(null)") : className;
  LogChildIndexLine("Finding index for control type: ", controlType, ", className: ", shownClass);
  const WalkerPtr walker = ControlViewWalker();
  if (!walker) {
    LogChildIndexLine("ERROR: Failed to get tree walker");
    return 0;
  }
  const ElementPtr parent = ParentOf(*walker, element);
  if (!parent) {
    LogChildIndexLine("No parent element found, returning index 0");
    return 0;
  }
  ElementArrayPtr siblings;
  if (const Outcome searched = FindSiblings(*automation, *parent, controlType, className, siblings); !searched.IsOk()) {
    LogChildIndexLine("ERROR: ", searched.details);
    return 0;
  }
  int count = 0;
  if (FAILED(siblings->get_Length(&count))) {
    LogChildIndexLine("ERROR: Failed to get filtered children count");
    return 0;
  }
  LogChildIndexLine("Found ", count, " siblings with controlType=", controlType, " and className=", shownClass);
  LogChildIndexLine("Parent has ", count, " children matching control type ", controlType, " and className '",
                    shownClass, "'");
  const int position = PositionIn(*automation, *siblings, count, element);
  if (position == 0) {
    LogChildIndexLine("Target not found among siblings, returning 0");
    return 0;
  }
  LogChildIndexLine("Found target at index: ", position);
  return position;
}

}  // namespace korvane
