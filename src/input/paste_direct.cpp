#include <optional>

#include "automation/target_window.h"
#include "capture/element_at_point.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "resolve/find_target.h"

namespace korvane {
namespace {

constexpr int kInsertAtCaret = 1;
constexpr TaggedLog LogDirectPasteLine("[pasteToTargetDirect] ");

// Null when the target is found and has no window of its own; nothing when it is not found.
std::optional<HWND> FindOwnWindow(const TargetRecord& target, HWND window) {
  const ElementPtr element = FindTargetElement(&target, window);
  return element ? std::optional(NativeWindowOf(element.Get())) : std::nullopt;
}

// The target's own control, or null with the reason logged.
HWND FindControl(const TargetRecord& target, HWND window) {
  const std::optional<HWND> control = FindOwnWindow(target, window);
  if (!control) {
    LogDirectPasteLine("ERROR: Could not find target element");
    return nullptr;
  }
  if (*control == nullptr) {
    LogDirectPasteLine("ERROR: Could not get native window handle from element");
    return nullptr;
  }
  LogDirectPasteLine("Found control HWND: ", HandleNumber(*control));
  return *control;
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

Outcome PasteDirect(const TargetRecord* target, HWND givenWindow, const KorvaneChar* text, int mode) {
  LogDirectPasteLine("Function entered");
  if (target == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid target parameter"};
  }
  if (text == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid text parameter"};
  }
  const HWND window = ChooseWindow(givenWindow);
  if (window == nullptr) {
    LogDirectPasteLine("ERROR: No target window specified");
    return KORVANE_INVALID_ARGUMENT;
  }
  LogDirectPasteLine("Target window: ", HandleNumber(window));
  LogDirectPasteLine("AutomationId: ", ViewWithin(target->automationId));
  LogDirectPasteLine("Mode: ", mode);
  const HWND control = FindControl(*target, window);
  if (control == nullptr) {
    return KORVANE_NOT_FOUND;
  }
  BringForward(control);
  LogDirectPasteLine("SendMessage result: ", SendText(control, text, mode));
  return KORVANE_OK;
}

}  // namespace
}  // namespace korvane

int pasteToTargetDirect(const TargetRecord* target, HWND window, const KorvaneChar* text, int mode) noexcept {
  return korvane::AnswerExport("pasteToTargetDirect", KORVANE_FAILED,
                               [&] { return korvane::PasteDirect(target, window, text, mode); });
}
