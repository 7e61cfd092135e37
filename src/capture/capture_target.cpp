#include "automation/automation_context.h"
#include "capture/element_at_point.h"
#include "capture/tree_path.h"
#include "korvane/korvane.h"
#include "log/console_trace.h"
#include "log/export_guard.h"

namespace korvane {

static_assert(sizeof(TargetRecord) == 3256 && alignof(TargetRecord) == 8);
static_assert(offsetof(TargetRecord, automationId) == 0 && offsetof(TargetRecord, hwnd) == 512 &&
              offsetof(TargetRecord, x) == 520 && offsetof(TargetRecord, y) == 524 &&
              offsetof(TargetRecord, identificationMethod) == 528 && offsetof(TargetRecord, pathLength) == 532 &&
              offsetof(TargetRecord, controlTypes) == 536 && offsetof(TargetRecord, classNames) == 616 &&
              offsetof(TargetRecord, childIndices) == 3176);

namespace {

constexpr auto kName = "captureTargetAtPoint";
constexpr TaggedLog LogCaptureLine("[captureTargetAtPoint] ");

// True when the element has one.
bool CaptureAutomationId(IUIAutomationElement* element, TargetRecord& target) {
  Bstr automationId;
  if (SUCCEEDED(element->get_CurrentAutomationId(automationId.Receive())) && automationId) {
    CopyCut(target.automationId, ViewOf(automationId.Get()));
  }
  return target.automationId[0] != 0;
}

HWND FindLoggedWindow(IUIAutomationElement* element, POINT point) {
  return FindWindowOf(element, point, [](WindowSearch step, HWND window) {
    switch (step) {
      case WindowSearch::NoOwnWindow:
        return LogCaptureLine("Element has no HWND, trying WindowFromPoint fallback");
      case WindowSearch::AtPoint:
        return LogCaptureLine("WindowFromPoint fallback succeeded - HWND: 0x", Hex(window));
      case WindowSearch::NotAtPoint:
        return LogCaptureLine("WindowFromPoint failed, trying tree walk fallback");
      case WindowSearch::AtAncestor:
        return LogCaptureLine("Tree walk fallback succeeded - HWND: 0x", Hex(window));
      case WindowSearch::Nowhere:
        return LogCaptureLine("All HWND fallback methods failed - element may not be automatable");
    }
  });
}

HWND FindTracedWindow(IUIAutomationElement* element, POINT point) {
  return FindWindowOf(element, point, [](WindowSearch step, HWND /*window*/) {
    switch (step) {
      case WindowSearch::NoOwnWindow:
        return ConsoleTrace("Element has no HWND, trying WindowFromPoint fallback");
      case WindowSearch::AtPoint:
        return ConsoleTrace("WindowFromPoint fallback succeeded");
      case WindowSearch::NotAtPoint:
        return ConsoleTrace("WindowFromPoint failed, trying tree walk fallback");
      case WindowSearch::AtAncestor:
        return ConsoleTrace("Tree walk fallback succeeded");
      case WindowSearch::Nowhere:
        return ConsoleTrace("All HWND fallback methods failed - element may not be automatable");
    }
  });
}

// A path that cannot be built does not spoil the capture: the other identifications stand without it.
void CaptureLoggedTreePath(IUIAutomationElement* element, TargetRecord& target) {
  LogCaptureLine("Building tree path...");
  try {
    if (BuildTreePath(element, &target) && target.pathLength > 0) {
      LogCaptureLine("Successfully built tree path with ", target.pathLength, " levels");
    } else {
      LogCaptureLine("WARNING: Tree path building resulted in 0 levels");
    }
  } catch (...) {
    LogCaptureLine("ERROR: Exception occurred during tree path building");
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

Outcome CaptureAtPoint(TargetRecord* target, int x, int y) {
  LogCaptureLine("Called with coordinates (", x, ", ", y, ")");
  if (target == nullptr) {
    LogCaptureLine("ERROR: target parameter is null");
    return {KORVANE_INVALID_ARGUMENT, "target parameter is null"};
  }
  if (const Outcome initialized = InitializeAutomation(); !initialized.IsOk()) {
    LogCaptureLine("ERROR: Failed to initialize automation");
    return initialized;
  }
  *target = {};
  target->x = x;
  target->y = y;
  LogCaptureLine("Set coordinates: (", x, ", ", y, ")");
  target->identificationMethod = KORVANE_METHOD_UNDECIDED;
  const ElementPtr element = GetElementAtPoint({x, y});
  if (!element) {
    LogCaptureLine("ERROR: No element found at specified point");
    return {KORVANE_NOT_FOUND, "No element found at point"};
  }
  LogCaptureLine("Successfully found element at point");
  if (CaptureAutomationId(element.Get(), *target)) {
    LogCaptureLine("Captured AutomationId: '", ViewWithin(target->automationId), "'");
  } else {
    LogCaptureLine("No AutomationId available");
  }
  target->hwnd = FindLoggedWindow(element.Get(), {x, y});
  if (target->hwnd != nullptr) {
    LogCaptureLine("Captured HWND: 0x", Hex(target->hwnd));
  } else {
    LogCaptureLine("WARNING: No HWND captured for element (HWND=0)");
  }
  CaptureLoggedTreePath(element.Get(), *target);
  LogCaptureLine("Set identificationMethod to -1 (user selection required)");
  return KORVANE_OK;
}

Outcome CaptureAtCursor(TargetRecord* target) {
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
    ConsoleTrace("WARNING: No HWND captured for element (HWND=0)");
  }
  return KORVANE_OK;
}

}  // namespace
}  // namespace korvane

int captureTargetAtPoint(TargetRecord* target, int x, int y) noexcept {
  return korvane::AnswerExport(korvane::kName, KORVANE_FAILED, [&] {
    const korvane::Outcome captured = korvane::CaptureAtPoint(target, x, y);
    // The element is released before the capture is called complete.
    if (captured.IsOk()) {
      korvane::LogCaptureLine("SUCCESS: Captured all identification methods");
    }
    return captured;
  });
}

int captureTargetAtCursor(TargetRecord* target) noexcept {
  return korvane::AnswerExport("captureTargetAtCursor", KORVANE_NOT_FOUND, [&] {
    const korvane::Outcome captured = korvane::CaptureAtCursor(target);
    if (captured.IsOk()) {
      korvane::ConsoleTrace("=== CAPTURE END ===");
    }
    return captured;
  });
}
