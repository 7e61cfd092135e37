#include "resolve/find_target.h"

#include "automation/automation_context.h"
#include "capture/element_at_point.h"
#include "log/diagnostic_log.h"
#include "platform/stopwatch.h"
#include "resolve/tree_path_navigation.h"

namespace korvane {
namespace {

constexpr TaggedLog LogFindTargetLine("[FindTargetElement] ");

// Direct children first: most targets are there, and the search is then shallow.
ElementPtr SearchByAutomationId(IUIAutomation& automation, IUIAutomationElement& root, const WCHAR* automationId) {
  const Variant value(automationId);
  ConditionPtr condition;
  if (value.Text() == nullptr ||
      FAILED(automation.CreatePropertyCondition(UIA_AutomationIdPropertyId, value.Get(), condition.Receive())) ||
      !condition) {
    return {};
  }
  ElementPtr found;
  HRESULT result = root.FindFirst(TreeScope_Children, condition.Get(), found.Receive());
  if (SUCCEEDED(result) && !found) {
    result = root.FindFirst(TreeScope_Descendants, condition.Get(), found.Receive());
  }
  return SUCCEEDED(result) ? found : ElementPtr();
}

// False when the window has no element to search below.
bool SearchWindow(IUIAutomation& automation, HWND window, const WCHAR* automationId, ElementPtr& found) {
  ElementPtr root;
  if (FAILED(automation.ElementFromHandle(window, root.Receive())) || !root) {
    return false;
  }
  found = SearchByAutomationId(automation, *root, automationId);
  return true;
}

ElementPtr FindElementByAutomationId(HWND window, const WCHAR* automationId) {
  const Stopwatch watch;
  LogLine("[FindElementByAutomationId] Starting AutomationId search");
  const AutomationPtr automation = CurrentAutomation();
  if (!automation || window == nullptr || ViewOf(automationId).empty()) {
    return {};
  }
  ElementPtr found;
  if (!SearchWindow(*automation, window, automationId, found)) {
    return {};
  }
  LogLine("AutomationId search completed in ", watch.Milliseconds(), "ms");
  return found;
}

ElementPtr FindElementByCoordinates(int x, int y) {
  const Stopwatch watch;
  LogLine("[FindElementByCoordinates] Starting coordinate search");
  if (!CurrentAutomation()) {
    return {};
  }
  ElementPtr element = GetElementAtPoint({x, y});
  LogLine("Coordinate search completed in ", watch.Milliseconds(), "ms");
  return element;
}

// The window that an element found by its point belongs to.
HWND FindLoggedWindow(IUIAutomationElement* element, POINT point) {
  DWORD start = 0;
  DWORD walkStart = 0;
  return FindWindowOf(element, point, [&](WindowSearch step, HWND /*window*/) {
    switch (step) {
      case WindowSearch::NoOwnWindow:
        LogFindTargetLine("No HWND for element, trying WindowFromPoint fallback");
        start = GetTickCount();
        break;
      case WindowSearch::AtPoint:
        LogFindTargetLine("Using WindowFromPoint fallback - HWND obtained (", GetTickCount() - start, "ms)");
        break;
      case WindowSearch::NotAtPoint:
        LogFindTargetLine("WindowFromPoint failed, trying tree walk fallback");
        walkStart = GetTickCount();
        break;
      case WindowSearch::AtAncestor:
        LogFindTargetLine("Using tree walk fallback - HWND obtained (", GetTickCount() - walkStart, "ms)");
        break;
      case WindowSearch::Nowhere:
        LogFindTargetLine("All HWND fallback methods failed (total fallback time: ", GetTickCount() - start, "ms)");
        break;
    }
  });
}

bool IsWithin(HWND window, HWND target) {
  for (; window != nullptr; window = GetParent(window)) {
    if (window == target) {
      return true;
    }
  }
  return false;
}

// An element at the point counts only when it belongs to the target window: something else may cover it now.
ElementPtr FindInWindowByCoordinates(const TargetRecord& target, HWND window) {
  LogFindTargetLine("Trying Method 2: Coordinates (fallback)");
  ElementPtr element = FindElementByCoordinates(target.x, target.y);
  if (!element) {
    return {};
  }
  if (IsWithin(FindLoggedWindow(element.Get(), {target.x, target.y}), window)) {
    LogFindTargetLine("SUCCESS with Method 2: Coordinates (verified window)");
    return element;
  }
  LogFindTargetLine("Method 2: Element not in target window, releasing");
  return {};
}

}  // namespace

ElementPtr FindTargetElement(const TargetRecord* target, HWND window) {
  if (target == nullptr || window == nullptr) {
    LogFindTargetLine("ERROR: Invalid parameters");
    return {};
  }
  const int method = target->identificationMethod;
  LogFindTargetLine("Starting with identification method: ", method);
  const bool byAutomationId = method == KORVANE_METHOD_AUTOMATION_ID || method == KORVANE_METHOD_COORDINATES;
  if (byAutomationId && target->automationId[0] != 0) {
    LogFindTargetLine("Trying Method 0: AutomationId");
    WCHAR automationId[KORVANE_AUTOMATION_ID_SIZE];
    CopyCut(automationId, ViewWithin(target->automationId));
    if (ElementPtr element = FindElementByAutomationId(window, automationId)) {
      LogFindTargetLine("SUCCESS with Method 0: AutomationId");
      return element;
    }
    LogFindTargetLine("Method 0 failed, continuing...");
  }
  if (method == KORVANE_METHOD_TREE_PATH && target->pathLength >= 1) {
    LogFindTargetLine("Trying Method 3: Tree Path");
    if (ElementPtr element = FindElementByTreePath(window, target)) {
      LogFindTargetLine("SUCCESS with Method 3: Tree Path");
      return element;
    }
    LogFindTargetLine("Method 3 failed, falling back to coordinates...");
  }
  if (target->x != 0 || target->y != 0) {
    if (ElementPtr element = FindInWindowByCoordinates(*target, window)) {
      return element;
    }
    LogFindTargetLine("Method 2 failed");
  }
  LogFindTargetLine("FAILED: All identification methods failed");
  return {};
}

}  // namespace korvane
