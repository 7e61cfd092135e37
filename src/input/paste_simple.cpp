#include "automation/automation_context.h"
#include "korvane/korvane.h"
#include "log/diagnostic_log.h"

int pasteToTargetSimple(const TargetRecord* target, HWND window) noexcept {
  if (target == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, "pasteToTargetSimple", "Invalid target parameter");
  }
  if (ChooseWindow(window) == nullptr) {
    return KORVANE_INVALID_ARGUMENT;
  }
  return sendCtrlV();
}
