#include "capture/element_at_point.h"

#include "automation/automation_context.h"
#include "log/console_trace.h"
#include "log/diagnostic_log.h"

namespace korvane {
namespace {

constexpr TaggedLog LogElementAtPointLine("[GetElementAtPoint] ");
constexpr TaggedClockLog LogWindowFromCoordinatesLine("[GetWindowFromCoordinates] ");
constexpr TaggedClockLog LogNearestWindowLine("[GetNearestWindowHandle] ");

void LogName(IUIAutomationElement* element) {
  Bstr name;
  if (FAILED(element->get_CurrentName(name.Receive())) || !name) {
    LogElementAtPointLine("Found element but couldn't get name");
  } else {
    LogElementAtPointLine("Found element with name: '", ViewOf(name.Get()), "'");
  }
}

// What the log shows of a found element. Its answers change nothing else.
void LogFoundElement(IUIAutomationElement* element) {
  LogName(element);
  CONTROLTYPEID controlType = 0;
  if (SUCCEEDED(element->get_CurrentControlType(&controlType))) {
    LogElementAtPointLine("Element control type: 0x", Hex(static_cast<std::uint32_t>(controlType)));
  }
  UIA_HWND window = nullptr;
  if (SUCCEEDED(element->get_CurrentNativeWindowHandle(&window))) {
    LogElementAtPointLine("Element HWND: ", HandleNumber(window));
  }
}

}  // namespace

ElementPtr GetElementAtPoint(POINT point) {
  LogElementAtPointLine("Called with point (", point.x, ", ", point.y, ")");
  AutomationPtr automation = CurrentAutomation();
  if (!automation) {
    LogElementAtPointLine("g_pAutomation is null, initializing...");
    if (InitializeAutomation().IsOk()) {
      automation = CurrentAutomation();
    }
    if (!automation) {
      LogElementAtPointLine("ERROR: Failed to initialize automation");
      return {};
    }
    LogElementAtPointLine("Automation initialized successfully");
  }
  ElementPtr element;
  if (const HRESULT result = automation->ElementFromPoint(point, element.Receive()); FAILED(result)) {
    LogElementAtPointLine("ERROR: ElementFromPoint failed with HRESULT: 0x", Hex(result));
    return {};
  }
  if (!element) {
    LogElementAtPointLine("ElementFromPoint returned null element");
    return {};
  }
  LogFoundElement(element.Get());
  LogElementAtPointLine("SUCCESS: Returning element");
  return element;
}

ElementAtCursor GetElementAtCursor() {
  ConsoleTrace("GetElementAtCursor: Starting cursor detection");
  ElementAtCursor found;
  if (!GetCursorPos(&found.cursor)) {
    ConsoleTrace("ERROR: GetCursorPos failed, error: ", GetLastError());
    return found;
  }
  ConsoleTrace("Cursor position: (", found.cursor.x, ", ", found.cursor.y, ")");
  const Outcome initialized = InitializeAutomation();
  const AutomationPtr automation = CurrentAutomation();
  if (!initialized.IsOk() || !automation) {
    ConsoleTrace("ERROR: InitializeAutomation failed, result: ", initialized.code);
    return found;
  }
  ElementPtr element;
  if (const HRESULT result = automation->ElementFromPoint(found.cursor, element.Receive()); FAILED(result)) {
    ConsoleTrace("ERROR: ElementFromPoint failed, HRESULT: 0x", Padded{static_cast<std::uint32_t>(result), 8, 16});
    return found;
  }
  if (!element) {
    ConsoleTrace("ERROR: ElementFromPoint returned null element");
    return found;
  }
  ConsoleTrace("GetElementAtCursor: Successfully found element");
  found.element = std::move(element);
  return found;
}

HWND GetWindowFromCoordinates(int x, int y) {
  const HWND window = WindowFromPoint({x, y});
  LogWindowFromCoordinatesLine("Point (", x, ", ", y, ") -> HWND: 0x", Hex(window));
  return window;
}

HWND GetNearestWindowHandle(IUIAutomationElement* element) {
  constexpr int kMaxDepth = 20;
  if (element == nullptr) {
    LogNearestWindowLine("Element is null");
    return nullptr;
  }
  if (const HWND own = NativeWindowOf(element)) {
    LogNearestWindowLine("Element has HWND: 0x", Hex(own));
    return own;
  }
  LogNearestWindowLine("Element has no HWND, starting tree walk");
  const AutomationPtr automation = CurrentAutomation();
  WalkerPtr walker;
  const HRESULT result = automation ? automation->get_ControlViewWalker(walker.Receive()) : E_POINTER;
  if (FAILED(result) || !walker) {
    LogNearestWindowLine("ERROR: Failed to get tree walker, HRESULT: 0x", Hex(result));
    return nullptr;
  }
  ElementPtr current(element);
  for (int depth = 0; depth < kMaxDepth;) {
    ElementPtr parent;
    if (FAILED(walker->GetParentElement(current.Get(), parent.Receive())) || !parent) {
      LogNearestWindowLine("Reached tree root or error at depth ", depth);
      break;
    }
    ++depth;
    if (const HWND window = NativeWindowOf(parent.Get())) {
      LogNearestWindowLine("Found HWND at depth ", depth, ": 0x", Hex(window));
      return window;
    }
    current = std::move(parent);
  }
  LogNearestWindowLine("No HWND found after walking up 20 levels");
  return nullptr;
}

HWND NativeWindowOf(IUIAutomationElement* element) {
  UIA_HWND window = nullptr;
  return SUCCEEDED(element->get_CurrentNativeWindowHandle(&window)) ? static_cast<HWND>(window) : nullptr;
}

}  // namespace korvane
