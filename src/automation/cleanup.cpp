#include "automation/cleanup.h"

#include "automation/automation_context.h"
#include "automation/target_window.h"
#include "korvane/korvane.h"
#include "log/diagnostic_log.h"
#include "util/cancel_monitor.h"

namespace korvane {

void ShutdownLibrary(LibraryEnd end) noexcept {
  if (end == LibraryEnd::Unload) {
    EndCancelMonitorAtUnload();
  } else {
    EndCancelMonitor();
  }

  AutomationContext context = TakeAutomationContext();
  context.automation = {};
  CloseLog();
  // At unload the thread is whichever freed the library last; balancing another thread's initialisation on it would end
  // the host's own. A host that cleans up does so on the thread that began, as the header asks.
  if (context.comInitialized && (end == LibraryEnd::Cleanup || context.comThread == GetCurrentThreadId())) {
    CoUninitialize();
  }
  ForgetTargetWindow();
}

}  // namespace korvane

void cleanupAutomation() noexcept {
  korvane::ShutdownLibrary(korvane::LibraryEnd::Cleanup);
}
