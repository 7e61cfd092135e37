#include "korvane/korvane.h"
#include "log/diagnostic_log.h"
#include "log/export_guard.h"
#include "platform/owners.h"

namespace {

// The default log file, its folder made when missing; empty when the user's folder is not known.
WideText DefaultLogPath() {
  TaskText localAppData;
  if (FAILED(SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, localAppData.Receive()))) {
    return {};
  }
  const WideText folder = WideText(ViewOf(localAppData.Get())) + TEXT("\\Tavrin");
  localAppData.Reset();
  // Usually there already; opening the file decides.
  CreateDirectoryW(folder.c_str(), nullptr);
  return folder + TEXT("\\automation_execution.log");
}

}  // namespace

void initializeLog(const KorvaneChar* logPath) noexcept {
  GuardExport("initializeLog", 0, [&] {
    CloseLog();
    if (!ViewOf(logPath).empty()) {
      OpenLog(logPath);
      return 0;
    }
    if (const WideText path = DefaultLogPath(); !path.empty()) {
      OpenLog(path.c_str());
    }
    return 0;
  });
}
