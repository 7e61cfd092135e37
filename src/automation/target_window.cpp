#include "automation/target_window.h"

#include <atomic>

#include "automation/automation_context.h"
#include "korvane/korvane.h"

namespace korvane {
namespace {

std::atomic<HWND> g_targetWindow{nullptr};

}  // namespace

HWND ChooseWindow(HWND window) noexcept {
  return window != nullptr ? window : g_targetWindow.load();
}

void ForgetTargetWindow() noexcept {
  g_targetWindow = nullptr;
}

}  // namespace korvane

int setTargetWindow(HWND window) noexcept {
  const korvane::Outcome initialized = korvane::InitializeAutomation();
  korvane::g_targetWindow = window;
  return initialized.code;
}
