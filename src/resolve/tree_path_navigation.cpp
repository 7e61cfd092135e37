#include "resolve/tree_path_navigation.h"

#include "automation/automation_context.h"
#include "capture/level_condition.h"
#include "log/diagnostic_log.h"
#include "platform/stopwatch.h"
#include "util/cancel_monitor.h"

namespace korvane {
namespace {

constexpr TaggedLog LogNavigationLine("[FindElementByTreePath] ");
constexpr TaggedLog LogValidationLine("[ValidateTreePathData] ");

using CacheRequestPtr = ComPtr<IUIAutomationCacheRequest>;

// What one level asks for.
struct Level {
  int number;  // from 0
  int controlType;
  const WCHAR* className;
  int index;
};

// Lets class name and control type of all candidates arrive with the search; none when it cannot be made.
CacheRequestPtr CreateStaticPropertiesRequest(IUIAutomation& automation) {
  CacheRequestPtr request;
  if (FAILED(automation.CreateCacheRequest(request.Receive())) || !request) {
    LogNavigationLine("WARNING: Failed to create cache request, using normal property access");
    return {};
  }
  request->AddProperty(UIA_ClassNamePropertyId);
  request->AddProperty(UIA_ControlTypePropertyId);
  ConditionPtr controlView;
  if (SUCCEEDED(automation.get_ControlViewCondition(controlView.Receive())) && controlView) {
    request->put_TreeFilter(controlView.Get());
  }
  LogNavigationLine("Created cache request for static properties");
  return request;
}

// 1 when level 0 is the window itself, else 0.
int FindStartLevel(IUIAutomationElement& root, const TargetRecord& target) {
  if (target.controlTypes[0] != UIA_WindowControlTypeId) {
    LogNavigationLine("Starting from level 0 - pathLength: ", target.pathLength,
                      ", first controlType: ", target.controlTypes[0]);
    return 0;
  }
  Bstr className;
  if (FAILED(root.get_CurrentClassName(className.Receive())) || !className) {
    LogNavigationLine("WARNING: Failed to get root element className");
    return 0;
  }
  const WideView rootClass = ViewOf(className.Get());
  const WideView firstClass = ViewWithin(target.classNames[0]);
  if (rootClass == firstClass) {
    LogNavigationLine("Skipping root window level - className matches: ", rootClass);
    return 1;
  }
  LogNavigationLine("Root window className '", rootClass, "' != target[0] className '", firstClass,
                    "' - starting from level 0");
  return 0;
}

ConditionPtr CreateCondition(IUIAutomation& automation, const Level& level) {
  if (level.controlType == 0) {
    ConditionPtr any;
    const HRESULT result = automation.CreateTrueCondition(any.Receive());
    if (FAILED(result) || !any) {
      LogNavigationLine("ERROR: Level ", level.number, " - Failed to create true condition, HRESULT: 0x", Hex(result));
      return {};
    }
    return any;
  }
  ConditionPtr condition;
  if (!CreateLevelCondition(automation, level.controlType, level.className, condition).IsOk()) {
    LogNavigationLine("ERROR: Level ", level.number,
                      " - Failed to create combined condition for ControlType: ", level.controlType,
                      ", ClassName: ", level.className);
  }
  return condition;
}

// The children that the level selects, in the platform's order, by one search.
ElementArrayPtr FindCandidates(IUIAutomation& automation, IUIAutomationElement& parent,
                               IUIAutomationCacheRequest* request, const Level& level) {
  const ConditionPtr condition = CreateCondition(automation, level);
  if (!condition) {
    return {};
  }
  ElementArrayPtr candidates;
  const HRESULT result =
      request != nullptr ? parent.FindAllBuildCache(TreeScope_Children, condition.Get(), request, candidates.Receive())
                         : parent.FindAll(TreeScope_Children, condition.Get(), candidates.Receive());
  if (FAILED(result) || !candidates) {
    LogNavigationLine("ERROR: Level ", level.number, " - FindAll failed, HRESULT: 0x", Hex(result),
                      ", children array is ", candidates ? "valid" : "null");
    return {};
  }
  return candidates;
}

ElementPtr ElementAt(IUIAutomationElementArray& candidates, int index) {
  ElementPtr element;
  return FAILED(candidates.GetElement(index, element.Receive())) ? ElementPtr() : element;
}

bool HasClassName(IUIAutomationElement& element, WideView className) {
  Variant cached;
  if (SUCCEEDED(element.GetCachedPropertyValue(UIA_ClassNamePropertyId, cached.Receive())) &&
      cached.Text() != nullptr) {
    return ViewOf(cached.Text()) == className;
  }
  Bstr current;
  return SUCCEEDED(element.get_CurrentClassName(current.Receive())) && current && ViewOf(current.Get()) == className;
}

// The candidate at the level's position whose class name fits, or with position 0 the first that fits. Entries that the
// array does not hand out have no position.
ElementPtr ScanCandidates(IUIAutomationElementArray& candidates, int count, const Level& level) {
  int position = 0;
  for (int i = 0; i < count; ++i) {
    ElementPtr candidate = ElementAt(candidates, i);
    if (!candidate) {
      continue;
    }
    ++position;
    if (level.index != 0 && level.index != position) {
      continue;
    }
    const bool fits = *level.className == 0 || HasClassName(*candidate, level.className);
    if (fits) {
      return candidate;
    }
    if (level.index != 0) {
      break;
    }
  }
  return {};
}

// The level's element below `parent`, or none with the reason logged.
ElementPtr FindLevel(IUIAutomation& automation, IUIAutomationElement& parent, IUIAutomationCacheRequest* request,
                     const Level& level, const Stopwatch& watch) {
  const ElementArrayPtr candidates = FindCandidates(automation, parent, request, level);
  if (!candidates) {
    return {};
  }
  int count = 0;
  if (const HRESULT result = candidates->get_Length(&count); FAILED(result)) {
    LogNavigationLine("ERROR: Level ", level.number, " - Failed to get children count, HRESULT: 0x", Hex(result));
    return {};
  }
  if (count == 0) {
    LogNavigationLine("ERROR: Level ", level.number,
                      " - No children found matching combined condition: ControlType=", level.controlType,
                      " AND ClassName=", level.className);
    return {};
  }
  const auto logFailure = [&](const auto&... reason) {
    LogNavigationLine("Tree path FAILED at level ", level.number + 1, ": ", reason..., ", time: ", watch.Milliseconds(),
                      "ms");
  };
  if (*level.className == 0 && level.index >= 1) {
    if (level.index > count) {
      logFailure("index ", level.index, " exceeds child count ", count);
      return {};
    }
    ElementPtr picked = ElementAt(*candidates, level.index - 1);
    if (!picked) {
      logFailure("failed to get element at index ", level.index);
    }
    return picked;
  }
  ElementPtr found = ScanCandidates(*candidates, count, level);
  if (!found) {
    logFailure("no element found with index ", level.index);
  }
  return found;
}

}  // namespace

bool ValidateTreePathData(const TargetRecord* target) {
  const Stopwatch watch;
  if (target == nullptr) {
    LogValidationLine("ERROR: target is null");
    return false;
  }
  if (target->pathLength < 1 || target->pathLength > KORVANE_MAX_PATH_LEVELS) {
    LogValidationLine("ERROR: pathLength out of range: ", target->pathLength, " (valid range: 1-20)");
    return false;
  }
  for (int i = 0; i < target->pathLength; ++i) {
    if (target->controlTypes[i] < 0) {
      LogValidationLine("ERROR: Invalid control type at level ", i + 1, ": ", target->controlTypes[i],
                        " (must be >= 0)");
      return false;
    }
    if (ViewWithin(target->classNames[i]).size() == KORVANE_CLASS_NAME_SIZE) {
      LogValidationLine("ERROR: Class name too long at level ", i + 1, " (must be < 64 characters)");
      return false;
    }
    if (target->childIndices[i] < 0) {
      LogValidationLine("ERROR: Invalid child index at level ", i + 1, ": ", target->childIndices[i],
                        " (must be >= 0)");
      return false;
    }
  }
  LogValidationLine("SUCCESS: All ", target->pathLength, " levels validated in ", watch.Milliseconds(), "ms");
  return true;
}

ElementPtr FindElementByTreePath(HWND window, const TargetRecord* target) {
  const Stopwatch watch;
  LogNavigationLine("Starting tree path navigation - pathLength: ", target != nullptr ? target->pathLength : -1,
                    ", window: 0x", Hex(window));
  const AutomationPtr automation = CurrentAutomation();
  if (!automation) {
    LogNavigationLine("ERROR: g_pAutomation is null");
    return {};
  }
  if (window == nullptr) {
    LogNavigationLine("ERROR: window handle is null");
    return {};
  }
  if (target == nullptr) {
    LogNavigationLine("ERROR: target is null");
    return {};
  }
  if (!ValidateTreePathData(target)) {
    LogNavigationLine("ERROR: ValidateTreePathData failed");
    return {};
  }
  const CacheRequestPtr request = CreateStaticPropertiesRequest(*automation);
  ElementPtr current;
  if (const HRESULT result = automation->ElementFromHandle(window, current.Receive()); FAILED(result) || !current) {
    LogNavigationLine("ERROR: Failed to get root element, HRESULT: 0x", Hex(result));
    return {};
  }
  const int start = FindStartLevel(*current, *target);
  for (int i = start; i < target->pathLength; ++i) {
    if (CancelRequested()) {
      return {};
    }
    const Level level{i, target->controlTypes[i], target->classNames[i], target->childIndices[i]};
    current = FindLevel(*automation, *current, request.Get(), level, watch);
    if (!current) {
      return {};
    }
  }
  LogNavigationLine("Tree path SUCCESS (levels: ", target->pathLength - start, ", time: ", watch.Milliseconds(), "ms)");
  return current;
}

}  // namespace korvane
