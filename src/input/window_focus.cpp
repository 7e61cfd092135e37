#include "korvane/korvane.h"
#include "log/diagnostic_log.h"
#include "platform/platform.h"

namespace {

constexpr auto kName = "ensureWindowFocus";

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

}  // namespace

int ensureWindowFocus(HWND window) noexcept {
  if (window == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid window handle");
  }
  if (!IsWindow(window)) {
    return ReportError(KORVANE_NOT_FOUND, kName, "Window not found");
  }
  if (IsIconic(window)) {
    ShowWindow(window, SW_RESTORE);
  }
  if (!SetForegroundWindow(window)) {
    const DWORD ownThread = GetCurrentThreadId();
    const DWORD windowThread = GetWindowThreadProcessId(window, nullptr);
    if (ownThread == windowThread) {
      return ReportError(KORVANE_FAILED, kName, "Failed to set foreground window");
    }
    TakeForegroundFrom(window, ownThread, windowThread);
  }
  if (GetForegroundWindow() != window) {
    return ReportError(KORVANE_FAILED, kName, "Window not in foreground after focus attempt");
  }
  return KORVANE_OK;
}
