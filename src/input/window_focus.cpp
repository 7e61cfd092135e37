#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "platform/platform.h"

namespace korvane {
namespace {

// Lets this thread act for the window's one for a moment: the system grants the foreground to whoever has the input.
void TakeForegroundFrom(HWND window, DWORD ownThread, DWORD windowThread) {
  if (AttachThreadInput(ownThread, windowThread, TRUE)) {
    SetForegroundWindow(window);
    SetFocus(window);
    AttachThreadInput(ownThread, windowThread, FALSE);
  } else {
    ShowWindow(window, SW_SHOW);
    SetActiveWindow(window);
  }
}

Outcome BringToFront(HWND window) {
  if (window == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid window handle"};
  }
  if (!IsWindow(window)) {
    return {KORVANE_NOT_FOUND, "Window not found"};
  }
  if (IsIconic(window)) {
    ShowWindow(window, SW_RESTORE);
  }
  if (!SetForegroundWindow(window)) {
    const DWORD ownThread = GetCurrentThreadId();
    const DWORD windowThread = GetWindowThreadProcessId(window, nullptr);
    if (ownThread == windowThread) {
      return {KORVANE_FAILED, "Failed to set foreground window"};
    }
    TakeForegroundFrom(window, ownThread, windowThread);
  }
  if (GetForegroundWindow() != window) {
    return {KORVANE_FAILED, "Window not in foreground after focus attempt"};
  }
  return KORVANE_OK;
}

}  // namespace
}  // namespace korvane

int ensureWindowFocus(HWND window) noexcept {
  return korvane::AnswerExport("ensureWindowFocus", KORVANE_FAILED, [&] { return korvane::BringToFront(window); });
}
