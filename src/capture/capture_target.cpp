#include "automation/automation_context.h"
#include "capture/element_at_point.h"
#include "capture/tree_path.h"
#include "korvane/korvane.h"
#include "log/console_trace.h"
#include "log/export_guard.h"

static_assert(sizeof(TargetRecord) == 3256 && alignof(TargetRecord) == 8);
static_assert(offsetof(TargetRecord, automationId) == 0 && offsetof(TargetRecord, hwnd) == 512 &&
              offsetof(TargetRecord, x) == 520 && offsetof(TargetRecord, y) == 524 &&
              offsetof(TargetRecord, identificationMethod) == 528 && offsetof(TargetRecord, pathLength) == 532 &&
              offsetof(TargetRecord, controlTypes) == 536 && offsetof(TargetRecord, classNames) == 616 &&
              offsetof(TargetRecord, childIndices) == 3176);

namespace {

// True when the element has one.
bool CaptureAutomationId(IUIAutomationElement* element, TargetRecord& target) {
  Bstr automationId;
  if (SUCCEEDED(element->get_CurrentAutomationId(automationId.Receive())) && automationId) {
    CopyCut(target.automationId, ViewOf(automationId.Get()));
  }
  return target.automationId[0] != 0;
}

HWND FindLoggedWindow(IUIAutomationElement* element, int x, int y) {
  if (const HWND own = NativeWindowOf(element)) {
    return own;
  }
  LogLine("[captureTargetAtPoint] Element has no HWND, trying WindowFromPoint fallback");
  if (const HWND atPoint = GetWindowFromCoordinates(x, y)) {
    LogLine("[captureTargetAtPoint] WindowFromPoint fallback succeeded - HWND: 0x", Hex(atPoint));
    return atPoint;
  }
  LogLine("[captureTargetAtPoint] WindowFromPoint failed, trying tree walk fallback");
  const HWND nearest = GetNearestWindowHandle(element);
  if (nearest != nullptr) {
    LogLine("[captureTargetAtPoint] Tree walk fallback succeeded - HWND: 0x", Hex(nearest));
  } else {
    LogLine("[captureTargetAtPoint] All HWND fallback methods failed - element may not be automatable");
  }
  return nearest;
}

HWND FindTracedWindow(IUIAutomationElement* element, POINT point) {
  if (const HWND own = NativeWindowOf(element)) {
    return own;
  }
  ConsoleTrace("Element has no HWND, trying WindowFromPoint fallback");
  if (const HWND atPoint = GetWindowFromCoordinates(point.x, point.y)) {
    ConsoleTrace("WindowFromPoint fallback succeeded");
    return atPoint;
  }
  ConsoleTrace("WindowFromPoint failed, trying tree walk fallback");
  const HWND nearest = GetNearestWindowHandle(element);
  if (nearest != nullptr) {
    ConsoleTrace("Tree walk fallback succeeded");
  }
  return nearest;
}

// A path that cannot be built does not spoil the capture: the other identifications stand without it.
void CaptureLoggedTreePath(IUIAutomationElement* element, TargetRecord& target) {
  LogLine("[captureTargetAtPoint] Building tree path...");
  try {
    if (BuildTreePath(element, &target) && target.pathLength > 0) {
      LogLine("[captureTargetAtPoint] Successfully built tree path with ", target.pathLength, " levels");
    } else {
      LogLine("[captureTargetAtPoint] WARNING: Tree path building resulted in 0 levels");
    }
  } catch (...) {
    LogLine("[captureTargetAtPoint] ERROR: Exception occurred during tree path building");
    ClearTreePath(target);
  }
}

bool BuildTracedTreePath(IUIAutomationElement* element, TargetRecord& target) {
  try {
    return BuildTreePath(element, &target);
  } catch (...) {
    ClearTreePath(target);
    return false;
  }
}

int CaptureAtPoint(TargetRecord* target, int x, int y) {
  constexpr auto kName = "captureTargetAtPoint";
  LogLine("[captureTargetAtPoint] Called with coordinates (", x, ", ", y, ")");
  if (target == nullptr) {
    LogLine("[captureTargetAtPoint] ERROR: target parameter is null");
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "target parameter is null");
  }
  if (const int code = InitializeAutomation(); code != KORVANE_OK) {
    LogLine("[captureTargetAtPoint] ERROR: Failed to initialize automation");
    return code;
  }
  *target = {};
  target->x = x;
  target->y = y;
  LogLine("[captureTargetAtPoint] Set coordinates: (", x, ", ", y, ")");
  target->identificationMethod = KORVANE_METHOD_UNDECIDED;
  const ElementPtr element = GetElementAtPoint({x, y});
  if (!element) {
    LogLine("[captureTargetAtPoint] ERROR: No element found at specified point");
    return ReportError(KORVANE_NOT_FOUND, kName, "No element found at point");
  }
  LogLine("[captureTargetAtPoint] Successfully found element at point");
  if (CaptureAutomationId(element.Get(), *target)) {
    LogLine("[captureTargetAtPoint] Captured AutomationId: '", ViewWithin(target->automationId), "'");
  } else {
    LogLine("[captureTargetAtPoint] No AutomationId available");
  }
  target->hwnd = FindLoggedWindow(element.Get(), x, y);
  if (target->hwnd != nullptr) {
    LogLine("[captureTargetAtPoint] Captured HWND: 0x", Hex(target->hwnd));
  } else {
    LogLine("[captureTargetAtPoint] WARNING: No HWND captured for element (HWND=0)");
  }
  CaptureLoggedTreePath(element.Get(), *target);
  LogLine("[captureTargetAtPoint] Set identificationMethod to -1 (user selection required)");
  return KORVANE_OK;
}

int CaptureAtCursor(TargetRecord* target) {
  ConsoleTrace("=== CAPTURE START ===");
  ConsoleTrace("targetWindow: 0x", PointerDigits(GetForegroundWindow()));
  if (target == nullptr) {
    ConsoleTrace("ERROR: target is null");
    return KORVANE_NOT_FOUND;
  }
  *target = {};
  target->identificationMethod = KORVANE_METHOD_UNDECIDED;
  ConsoleTrace("Initialized target, identificationMethod = ", target->identificationMethod);
  const ElementAtCursor found = GetElementAtCursor();
  if (!found.element) {
    ConsoleTrace("ERROR: GetElementAtCursor failed");
    return KORVANE_NOT_FOUND;
  }
  ConsoleTrace("GetElementAtCursor succeeded");
  IUIAutomationElement* element = found.element.Get();
  const bool built = BuildTracedTreePath(element, *target);
  ConsoleTrace("BuildTreePath result: ", built ? "SUCCESS" : "FAILED", ", pathLength: ", target->pathLength);
  const bool hasPath = target->pathLength > 0;
  target->identificationMethod = hasPath ? KORVANE_METHOD_TREE_PATH : KORVANE_METHOD_COORDINATES;
  ConsoleTrace(hasPath ? "Using Method 3 (Tree Path)" : "Using Method 2 (Coordinates fallback)");
  ConsoleTrace("FINAL: identificationMethod = ", target->identificationMethod);
  // Without a second reading the point of the first one serves the window fallback: the element was found there.
  POINT point = found.cursor;
  if (POINT now{}; GetCursorPos(&now)) {
    point = now;
    target->x = now.x;
    target->y = now.y;
    ConsoleTrace("Captured coordinates: (", target->x, ", ", target->y, ")");
  }
  if (CaptureAutomationId(element, *target)) {
    ConsoleTrace("Captured AutomationId: [has_data]");
  }
  target->hwnd = FindTracedWindow(element, point);
  if (target->hwnd != nullptr) {
    ConsoleTrace("Captured HWND: 0x", PointerDigits(target->hwnd));
  } else {
    ConsoleTrace("All HWND fallback methods failed - element may not be automatable");
    ConsoleTrace("WARNING: No HWND captured for element (HWND=0)");
  }
  return KORVANE_OK;
}

}  // namespace

int captureTargetAtPoint(TargetRecord* target, int x, int y) noexcept {
  return GuardExport("captureTargetAtPoint", int{KORVANE_FAILED}, [&] {
    const int code = CaptureAtPoint(target, x, y);
    // The element is released before the capture is called complete.
    if (code == KORVANE_OK) {
      LogLine("[captureTargetAtPoint] SUCCESS: Captured all identification methods");
    }
    return code;
  });
}

int captureTargetAtCursor(TargetRecord* target) noexcept {
  return GuardExport("captureTargetAtCursor", int{KORVANE_NOT_FOUND}, [&] {
    const int code = CaptureAtCursor(target);
    if (code == KORVANE_OK) {
      ConsoleTrace("=== CAPTURE END ===");
    }
    return code;
  });
}
