#include "automation/automation_context.h"
#include "capture/element_at_point.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/find_target.h"

namespace {

constexpr auto kName = "pasteToTargetDirect";
constexpr int kInsertAtCaret = 1;

// The target's own control, or null with the code and the reason logged.
struct Control {
  HWND window;
  int code;
};

Control FindControl(const TargetRecord& target, HWND window) {
  ElementPtr element = FindTargetElement(&target, window);
  if (!element) {
    LogDirectPasteLine("ERROR: Could not find target element");
    return {nullptr, KORVANE_NOT_FOUND};
  }
  const HWND control = NativeWindowOf(element.Get());
  element.Reset();
  if (control == nullptr) {
    LogDirectPasteLine("ERROR: Could not get native window handle from element");
    return {nullptr, KORVANE_NOT_FOUND};
  }
  LogDirectPasteLine("Found control HWND: ", HandleNumber(control));
  return {control, KORVANE_OK};
}

void BringForward(HWND control) {
  constexpr DWORD kSettleMilliseconds = 50;
  if (const HWND top = GetAncestor(control, GA_ROOT)) {
    SetForegroundWindow(top);
    Sleep(kSettleMilliseconds);
  }
}

LRESULT SendText(HWND control, const KorvaneChar* text, int mode) {
  const auto lParam = reinterpret_cast<LPARAM>(text);
  if (mode == kInsertAtCaret) {
    constexpr WPARAM kCanBeUndone = 1;
    LogDirectPasteLine("Using EM_REPLACESEL mode (insert at cursor)");
    return SendMessageW(control, EM_REPLACESEL, kCanBeUndone, lParam);
  }
  LogDirectPasteLine("Using WM_SETTEXT mode (replace all)");
  return SendMessageW(control, WM_SETTEXT, 0, lParam);
}

int PasteDirect(const TargetRecord* target, HWND givenWindow, const KorvaneChar* text, int mode) {
  LogDirectPasteLine("Function entered");
  if (target == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid target parameter");
  }
  if (text == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid text parameter");
  }
  const HWND window = ChooseWindow(givenWindow);
  if (window == nullptr) {
    LogDirectPasteLine("ERROR: No target window specified");
    return KORVANE_INVALID_ARGUMENT;
  }
  LogDirectPasteLine("Target window: ", HandleNumber(window));
  LogDirectPasteLine("AutomationId: ", ViewWithin(target->automationId));
  LogDirectPasteLine("Mode: ", mode);
  const Control control = FindControl(*target, window);
  if (control.window == nullptr) {
    return control.code;
  }
  BringForward(control.window);
  LogDirectPasteLine("SendMessage result: ", SendText(control.window, text, mode));
  return KORVANE_OK;
}

}  // namespace

int pasteToTargetDirect(const TargetRecord* target, HWND window, const KorvaneChar* text, int mode) noexcept {
  return GuardExport(kName, int{KORVANE_FAILED}, [&] { return PasteDirect(target, window, text, mode); });
}
