#include "capture/element_at_point.h"

#include "automation/automation_context.h"
#include "log/console_trace.h"
#include "log/diagnostic_log.h"

namespace {

// What the log shows of a found element. Its answers change nothing else.
void LogFoundElement(IUIAutomationElement* element) {
  Bstr name;
  if (FAILED(element->get_CurrentName(name.Receive())) || !name) {
    LogLine("[GetElementAtPoint] Found element but couldn't get name");
  } else {
    LogLine("[GetElementAtPoint] Found element with name: '", ViewOf(name.Get()), "'");
  }
  name.Reset();
  CONTROLTYPEID controlType = 0;
  if (SUCCEEDED(element->get_CurrentControlType(&controlType))) {
    LogLine("[GetElementAtPoint] Element control type: 0x", Hex(static_cast<std::uint32_t>(controlType)));
  }
  UIA_HWND window = nullptr;
  if (SUCCEEDED(element->get_CurrentNativeWindowHandle(&window))) {
    LogLine("[GetElementAtPoint] Element HWND: ", HandleNumber(window));
  }
}

}  // namespace

ElementPtr GetElementAtPoint(POINT point) {
  LogLine("[GetElementAtPoint] Called with point (", point.x, ", ", point.y, ")");
  AutomationPtr automation = CurrentAutomation();
  if (!automation) {
    LogLine("[GetElementAtPoint] g_pAutomation is null, initializing...");
    if (InitializeAutomation() == 0) {
      automation = CurrentAutomation();
    }
    if (!automation) {
      LogLine("[GetElementAtPoint] ERROR: Failed to initialize automation");
      return {};
    }
    LogLine("[GetElementAtPoint] Automation initialized successfully");
  }
  ElementPtr element;
  if (const HRESULT result = automation->ElementFromPoint(point, element.Receive()); FAILED(result)) {
    LogLine("[GetElementAtPoint] ERROR: ElementFromPoint failed with HRESULT: 0x", Hex(result));
    return {};
  }
  if (!element) {
    LogLine("[GetElementAtPoint] ElementFromPoint returned null element");
    return {};
  }
  LogFoundElement(element.Get());
  LogLine("[GetElementAtPoint] SUCCESS: Returning element");
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
  const int initialized = InitializeAutomation();
  const AutomationPtr automation = CurrentAutomation();
  if (initialized != 0 || !automation) {
    ConsoleTrace("ERROR: InitializeAutomation failed, result: ", initialized);
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
  LogClockLine("[GetWindowFromCoordinates] Point (", x, ", ", y, ") -> HWND: 0x", Hex(window));
  return window;
}

HWND GetNearestWindowHandle(IUIAutomationElement* element) {
  constexpr int kMaxDepth = 20;
  if (element == nullptr) {
    LogClockLine("[GetNearestWindowHandle] Element is null");
    return nullptr;
  }
  if (const HWND own = NativeWindowOf(element)) {
    LogClockLine("[GetNearestWindowHandle] Element has HWND: 0x", Hex(own));
    return own;
  }
  LogClockLine("[GetNearestWindowHandle] Element has no HWND, starting tree walk");
  const AutomationPtr automation = CurrentAutomation();
  ComPtr<IUIAutomationTreeWalker> walker;
  const HRESULT result = automation ? automation->get_ControlViewWalker(walker.Receive()) : E_POINTER;
  if (FAILED(result) || !walker) {
    LogClockLine("[GetNearestWindowHandle] ERROR: Failed to get tree walker, HRESULT: 0x", Hex(result));
    return nullptr;
  }
  ElementPtr current(element);
  for (int depth = 0; depth < kMaxDepth;) {
    ElementPtr parent;
    if (FAILED(walker->GetParentElement(current.Get(), parent.Receive())) || !parent) {
      LogClockLine("[GetNearestWindowHandle] Reached tree root or error at depth ", depth);
      break;
    }
    ++depth;
    if (const HWND window = NativeWindowOf(parent.Get())) {
      LogClockLine("[GetNearestWindowHandle] Found HWND at depth ", depth, ": 0x", Hex(window));
      return window;
    }
    current = std::move(parent);
  }
  LogClockLine("[GetNearestWindowHandle] No HWND found after walking up 20 levels");
  return nullptr;
}

HWND NativeWindowOf(IUIAutomationElement* element) {
  UIA_HWND window = nullptr;
  return SUCCEEDED(element->get_CurrentNativeWindowHandle(&window)) ? static_cast<HWND>(window) : nullptr;
}
