#include "korvane/korvane.h"
#include "log/diagnostic_log.h"
#include "log/export_guard.h"
#include "platform/owners.h"

namespace korvane {
namespace {

// The folder of the user's own application data; empty when it is not known.
WideText LocalAppDataFolder() {
  TaskText folder;
  if (FAILED(SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, folder.Receive()))) {
    return {};
  }
  return WideText(ViewOf(folder.Get()));
}

// The default log file, its folder made when missing; empty when the user's folder is not known.
WideText DefaultLogPath() {
  const WideText localAppData = LocalAppDataFolder();
  if (localAppData.empty()) {
    return {};
  }
  const WideText folder = localAppData + TEXT("\\Tavrin");
  // Usually there already; opening the file decides.
  CreateDirectoryW(folder.c_str(), nullptr);
  return folder + TEXT("\\automation_execution.log");
}

void StartLog(const WCHAR* path) {
  CloseLog();
  if (!ViewOf(path).empty()) {
    OpenLog(path);
    return;
  }
  if (const WideText defaultPath = DefaultLogPath(); !defaultPath.empty()) {
    OpenLog(defaultPath.c_str());
  }
}

}  // namespace
}  // namespace korvane

void initializeLog(const KorvaneChar* logPath) noexcept {
  korvane::AnswerExport("initializeLog", KORVANE_FAILED, [&] {
    korvane::StartLog(logPath);
    return KORVANE_OK;
  });
}
