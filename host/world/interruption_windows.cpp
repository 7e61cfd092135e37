#include <windows.h>

#include <atomic>

#include "host/world/interruption.h"

namespace host::world {

namespace {

std::atomic<bool> g_interrupted{false};
std::atomic<bool> g_ended{false};

// Called on a thread of the system's own.
BOOL WINAPI Note(DWORD event) {
  if (g_interrupted.exchange(true)) {
    return FALSE;
  }
  // After Ctrl+C there is time. When the console is closed, or the user logs off, the system ends the program as soon
  // as this returns, and after five seconds in any case.
  constexpr DWORD kLongestMilliseconds = 4500;
  constexpr DWORD kPauseMilliseconds = 10;
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    for (DWORD waited = 0; !g_ended && waited < kLongestMilliseconds; waited += kPauseMilliseconds) {
      Sleep(kPauseMilliseconds);
    }
  }
  return TRUE;
}

}  // namespace

InterruptionWatch::InterruptionWatch() {
  g_interrupted = false;
  g_ended = false;
  SetConsoleCtrlHandler(Note, TRUE);
}

InterruptionWatch::~InterruptionWatch() {
  g_ended = true;
  SetConsoleCtrlHandler(Note, FALSE);
}

bool IsInterrupted() {
  return g_interrupted;
}

}  // namespace host::world
