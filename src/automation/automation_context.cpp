#include "automation/automation_context.h"

#include <atomic>
#include <mutex>

#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "platform/mutex.h"
#include "util/cancel_monitor.h"

namespace {

// Guards the automation object and what belongs to it. Never held while the platform makes or releases anything: it may
// dispatch messages meanwhile, and with them call the host, which may call us on this very thread.
Mutex g_automationMutex;
IUIAutomation* g_pAutomation = nullptr;
bool g_comInitialized = false;
DWORD g_comThread = 0;

std::atomic<HWND> g_targetWindow{nullptr};

bool HasAutomation() noexcept {
  const std::lock_guard guard(g_automationMutex);
  return g_pAutomation != nullptr;
}

// False when another call was first, which happens to threads that need the object at once.
bool Publish(IUIAutomation* automation, bool comInitialized, DWORD thread) noexcept {
  const std::lock_guard guard(g_automationMutex);
  if (g_pAutomation != nullptr) {
    return false;
  }
  g_pAutomation = automation;
  g_comInitialized = comInitialized;
  g_comThread = thread;
  return true;
}

// What was wrong, for the log; null when the object exists.
const char* CreateAutomation() noexcept {
  if (HasAutomation()) {
    return nullptr;
  }
  const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  // A thread in the other threading model serves as well.
  if (FAILED(initialized) && initialized != RPC_E_CHANGED_MODE) {
    return "COM initialization failed";
  }
  const bool comInitialized = initialized == S_OK;
  const DWORD thread = GetCurrentThreadId();
  void* object = nullptr;
  const HRESULT created =
      CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation, &object);
  auto* const automation = SUCCEEDED(created) ? static_cast<IUIAutomation*>(object) : nullptr;
  if (automation != nullptr && Publish(automation, comInitialized, thread)) {
    return nullptr;
  }
  if (automation != nullptr) {
    automation->Release();
  }
  if (comInitialized) {
    CoUninitialize();
  }
  return automation != nullptr ? nullptr : "UI Automation creation failed";
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
