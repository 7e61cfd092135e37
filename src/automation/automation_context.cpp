#include "automation/automation_context.h"

#include <mutex>
#include <utility>

#include "korvane/korvane.h"
#include "log/diagnostic_log.h"
#include "platform/mutex.h"

namespace korvane {
namespace {

// Guards the automation object and what belongs to it. Never held while the platform makes or releases anything: it may
// dispatch messages meanwhile, and with them call the host, which may call us on this very thread.
Mutex g_automationMutex;
// Owned by whoever takes it to end the context: loading and unloading have nothing to do for a plain pointer.
IUIAutomation* g_pAutomation = nullptr;
bool g_comInitialized = false;
DWORD g_comThread = 0;

bool HasAutomation() noexcept {
  const std::lock_guard guard(g_automationMutex);
  return g_pAutomation != nullptr;
}

// The object model's initialisation on this thread, ended again unless it becomes a part of the context.
class ComInitialization {
 public:
  ComInitialization() noexcept : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~ComInitialization() {
    if (IsOurs() && !kept_) {
      CoUninitialize();
    }
  }
  ComInitialization(const ComInitialization&) = delete;
  ComInitialization& operator=(const ComInitialization&) = delete;

  // A thread in the other threading model serves as well.
  bool IsUsable() const noexcept {
    return SUCCEEDED(result_) || result_ == RPC_E_CHANGED_MODE;
  }
  bool IsOurs() const noexcept {
    return result_ == S_OK;
  }
  void Keep() noexcept {
    kept_ = true;
  }

 private:
  HRESULT result_;
  bool kept_ = false;
};

// Makes the object the process's own; the later of two threads that made one at once leaves its object as it is.
void Publish(AutomationPtr& automation, ComInitialization& com, DWORD thread) noexcept {
  const std::lock_guard guard(g_automationMutex);
  if (g_pAutomation == nullptr) {
    g_pAutomation = automation.Detach();
    g_comInitialized = com.IsOurs();
    g_comThread = thread;
    com.Keep();
  }
}

Outcome CreateAutomation() noexcept {
  if (HasAutomation()) {
    return KORVANE_OK;
  }
  ComInitialization com;
  if (!com.IsUsable()) {
    return {KORVANE_FAILED, "COM initialization failed"};
  }
  const DWORD thread = GetCurrentThreadId();
  AutomationPtr automation;
  if (FAILED(CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation,
                              reinterpret_cast<void**>(automation.Receive()))) ||
      !automation) {
    return {KORVANE_FAILED, "UI Automation creation failed"};
  }
  Publish(automation, com, thread);
  return KORVANE_OK;
}

}  // namespace

AutomationPtr CurrentAutomation() {
  const std::lock_guard guard(g_automationMutex);
  return AutomationPtr(g_pAutomation);
}

Outcome InitializeAutomation() noexcept {
  return Report("InitializeAutomation", CreateAutomation());
}

AutomationContext TakeAutomationContext() noexcept {
  const std::lock_guard guard(g_automationMutex);
  return {AutomationPtr::Adopt(std::exchange(g_pAutomation, nullptr)), std::exchange(g_comInitialized, false),
          g_comThread};
}

}  // namespace korvane

int initializeAutomation() noexcept {
  return korvane::InitializeAutomation().code;
}
