#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "platform/owners.h"
#include "platform/wide_text.h"

namespace korvane {
namespace {

constexpr const WCHAR* kUnknown = TEXT("Unknown");

// Writes the file name of the executable that owns the window into `name`.
template <std::size_t Size>
void DescribeProcess(HWND window, WCHAR (&name)[Size]) {
  DWORD processId = 0;
  GetWindowThreadProcessId(window, &processId);
  const KernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
  if (!process) {
    return CopyCut(name, kUnknown);
  }
  WCHAR path[MAX_PATH] = {};
  if (K32GetModuleFileNameExW(process.Get(), nullptr, path, MAX_PATH) == 0) {
    return CopyCut(name, kUnknown);
  }
  const WideView whole = ViewWithin(path);
  // Without a backslash npos + 1 is 0: the whole path.
  CopyCut(name, whole.substr(whole.rfind(TEXT('\\')) + 1));
}

Outcome DescribeWindow(HWND window, WindowInfo* info) {
  if (info == nullptr || window == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid parameters"};
  }
  *info = {};
  info->window = window;
  if (GetWindowTextW(window, info->title, KORVANE_WINDOW_TEXT_SIZE) == 0) {
    info->title[0] = 0;
  }
  DescribeProcess(window, info->processName);
  return KORVANE_OK;
}

}  // namespace
}  // namespace korvane

int getWindowInfo(HWND window, WindowInfo* info) noexcept {
  return korvane::AnswerExport("getWindowInfo", KORVANE_FAILED, [&] { return korvane::DescribeWindow(window, info); });
}
