#include "automation/automation_context.h"

#include <atomic>
#include <mutex>

#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "platform/mutex.h"
#include "util/cancel_monitor.h"

namespace {

// Guards the automation object and what belongs to it. Held while the object is created, so that threads that need it
// at once make one, and never while anything is released.
Mutex g_automationMutex;
IUIAutomation* g_pAutomation = nullptr;
bool g_comInitialized = false;
DWORD g_comThread = 0;

std::atomic<HWND> g_targetWindow{nullptr};

// What was wrong, for the log; null when the object exists.
const char* CreateAutomation() noexcept {
  const std::lock_guard guard(g_automationMutex);
  if (g_pAutomation != nullptr) {
    return nullptr;
  }
  const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  // A thread in the other threading model serves as well.
  if (FAILED(initialized) && initialized != RPC_E_CHANGED_MODE) {
    return "COM initialization failed";
  }
  g_comInitialized = initialized == S_OK;
  g_comThread = GetCurrentThreadId();
  void* object = nullptr;
  const HRESULT created =
      CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation, &object);
  if (SUCCEEDED(created) && object != nullptr) {
    g_pAutomation = static_cast<IUIAutomation*>(object);
    return nullptr;
  }
  if (g_comInitialized) {
    CoUninitialize();
    g_comInitialized = false;
  }
  return "UI Automation creation failed";
}

}  // namespace

AutomationPtr CurrentAutomation() {
  const std::lock_guard guard(g_automationMutex);
  return AutomationPtr(g_pAutomation);
}

int InitializeAutomation() noexcept {
  if (const char* failure = CreateAutomation()) {
    return ReportError(KORVANE_FAILED, "InitializeAutomation", failure);
  }
  return KORVANE_OK;
}

void ShutdownLibrary(LibraryEnd end) noexcept {
  if (end == LibraryEnd::Unload) {
    StopCancelMonitorAtUnload();
  } else {
    StopCancelMonitor();
  }

  IUIAutomation* automation = nullptr;
  bool comInitialized = false;
  DWORD comThread = 0;
  {
    const std::lock_guard guard(g_automationMutex);
    automation = std::exchange(g_pAutomation, nullptr);
    comInitialized = std::exchange(g_comInitialized, false);
    comThread = g_comThread;
  }
  if (automation != nullptr) {
    automation->Release();
  }
  CloseLog();
  // At unload the thread is whichever freed the library last; balancing another thread's initialisation on it would end
  // the host's own. A host that cleans up does so on the thread that began, as the header asks.
  if (comInitialized && (end == LibraryEnd::Cleanup || comThread == GetCurrentThreadId())) {
    CoUninitialize();
  }
  g_targetWindow = nullptr;
}

HWND ChooseWindow(HWND window) noexcept {
  return window != nullptr ? window : g_targetWindow.load();
}

int initializeAutomation() noexcept {
  return InitializeAutomation();
}

void cleanupAutomation() noexcept {
  ShutdownLibrary(LibraryEnd::Cleanup);
}

int setTargetWindow(HWND window) noexcept {
  const int result = InitializeAutomation();
  g_targetWindow = window;
  return result;
}

void delay(int milliseconds) noexcept {
  constexpr DWORD kDefaultMilliseconds = 50;
  Sleep(milliseconds < 1 ? kDefaultMilliseconds : static_cast<DWORD>(milliseconds));
}
