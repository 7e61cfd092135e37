#include "platform/thread_start.h"

std::atomic<korvane::ThreadBody> g_threadBody{nullptr};

// Nothing is unloaded here, so that the order of the last instructions does not matter.
DWORD WINAPI StartThreadBody(LPVOID /*parameter*/) {
  if (const HANDLE event = g_threadBody.load()()) {
    SetEvent(event);
  }
  return 0;
}
