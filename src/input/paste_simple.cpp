#include "automation/target_window.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"

int pasteToTargetSimple(const TargetRecord* target, HWND window) noexcept {
  return korvane::AnswerExport("pasteToTargetSimple", KORVANE_FAILED, [&]() -> korvane::Outcome {
    if (target == nullptr) {
      return {KORVANE_INVALID_ARGUMENT, "Invalid target parameter"};
    }
    if (korvane::ChooseWindow(window) == nullptr) {
      return KORVANE_INVALID_ARGUMENT;
    }
    return sendCtrlV();
  });
}
