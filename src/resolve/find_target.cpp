#include "resolve/find_target.h"

#include "automation/automation_context.h"
#include "capture/element_at_point.h"
#include "log/diagnostic_log.h"
#include "platform/stopwatch.h"
#include "resolve/tree_path_navigation.h"

namespace {

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

ElementPtr FindElementByAutomationId(HWND window, const WCHAR* automationId) {
  const Stopwatch watch;
  LogLine("[FindElementByAutomationId] Starting AutomationId search");
  const AutomationPtr automation = CurrentAutomation();
  if (!automation || window == nullptr || ViewOf(automationId).empty()) {
    return {};
  }
  ElementPtr root;
  if (FAILED(automation->ElementFromHandle(window, root.Receive())) || !root) {
    return {};
  }
  ElementPtr found = SearchByAutomationId(*automation.Get(), *root.Get(), automationId);
  root.Reset();
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
HWND FindWindowOfElement(IUIAutomationElement* element, int x, int y) {
  if (const HWND own = NativeWindowOf(element)) {
    return own;
  }
  LogLine("[FindTargetElement] No HWND for element, trying WindowFromPoint fallback");
  const DWORD start = GetTickCount();
  if (const HWND atPoint = GetWindowFromCoordinates(x, y)) {
    LogLine("[FindTargetElement] Using WindowFromPoint fallback - HWND obtained (", GetTickCount() - start, "ms)");
    return atPoint;
  }
  LogLine("[FindTargetElement] WindowFromPoint failed, trying tree walk fallback");
  const DWORD walkStart = GetTickCount();
  if (const HWND nearest = GetNearestWindowHandle(element)) {
    LogLine("[FindTargetElement] Using tree walk fallback - HWND obtained (", GetTickCount() - walkStart, "ms)");
    return nearest;
  }
  LogLine("[FindTargetElement] All HWND fallback methods failed (total fallback time: ", GetTickCount() - start, "ms)");
  return nullptr;
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
  LogLine("[FindTargetElement] Trying Method 2: Coordinates (fallback)");
  ElementPtr element = FindElementByCoordinates(target.x, target.y);
  if (!element) {
    return {};
  }
  if (IsWithin(FindWindowOfElement(element.Get(), target.x, target.y), window)) {
    LogLine("[FindTargetElement] SUCCESS with Method 2: Coordinates (verified window)");
    return element;
  }
  LogLine("[FindTargetElement] Method 2: Element not in target window, releasing");
  return {};
}

}  // namespace

ElementPtr FindTargetElement(const TargetRecord* target, HWND window) {
  if (target == nullptr || window == nullptr) {
    LogLine("[FindTargetElement] ERROR: Invalid parameters");
    return {};
  }
  const int method = target->identificationMethod;
  LogLine("[FindTargetElement] Starting with identification method: ", method);
  const bool byAutomationId = method == KORVANE_METHOD_AUTOMATION_ID || method == KORVANE_METHOD_COORDINATES;
  if (byAutomationId && target->automationId[0] != 0) {
    LogLine("[FindTargetElement] Trying Method 0: AutomationId");
    WCHAR automationId[KORVANE_AUTOMATION_ID_SIZE];
    CopyCut(automationId, ViewWithin(target->automationId));
    if (ElementPtr element = FindElementByAutomationId(window, automationId)) {
      LogLine("[FindTargetElement] SUCCESS with Method 0: AutomationId");
      return element;
    }
    LogLine("[FindTargetElement] Method 0 failed, continuing...");
  }
  if (method == KORVANE_METHOD_TREE_PATH && target->pathLength >= 1) {
    LogLine("[FindTargetElement] Trying Method 3: Tree Path");
    if (ElementPtr element = FindElementByTreePath(window, target)) {
      LogLine("[FindTargetElement] SUCCESS with Method 3: Tree Path");
      return element;
    }
    LogLine("[FindTargetElement] Method 3 failed, falling back to coordinates...");
  }
  if (target->x != 0 || target->y != 0) {
    if (ElementPtr element = FindInWindowByCoordinates(*target, window)) {
      return element;
    }
    LogLine("[FindTargetElement] Method 2 failed");
  }
  LogLine("[FindTargetElement] FAILED: All identification methods failed");
  return {};
}
