#include "host/world/program.h"

#include <windows.h>

#include "host/base/failure.h"
#include "host/base/text.h"

namespace host::world {

void StartProgram(const std::string& commandLine) {
  // The system writes into it.
  WideText line = Wide(commandLine);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  constexpr DWORD kElevationRequired = 740;
  // It inherits nothing: a file of ours that it kept open could not be replaced.
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NEW_PROCESS_GROUP, nullptr, nullptr,
                      &startup, &process)) {
    const DWORD error = GetLastError();
    throw Failure(ExitCode::NoWindow,
                  "cannot start " + commandLine + ": " +
                      (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? "there is no such program"
                       : error == kElevationRequired ? "it asks to run as administrator"
                                                     : "error " + std::to_string(error)));
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

void AskToClose(HWND window) {
  PostMessageW(window, WM_CLOSE, 0, 0);
}

}  // namespace host::world
