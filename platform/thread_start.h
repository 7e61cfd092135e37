// The start routine of our threads. It runs what it is handed and sets the event that this answers, if any, as its very
// last act: whoever sees the event set knows that the thread has no instruction of ours left to run, so that the code
// may go away. Waiting for the thread itself would not do: it cannot end while another thread holds the loader's lock.
#pragma once

#include <atomic>

#include "platform/platform.h"

namespace korvane {

using ThreadBody = HANDLE (*)() noexcept;

}  // namespace korvane

extern "C" {

DWORD WINAPI StartThreadBody(LPVOID parameter);
extern std::atomic<korvane::ThreadBody> g_threadBody;
}

namespace korvane {

// What to give CreateThread for a thread that runs `body`, which is the same for all threads of the library.
inline LPTHREAD_START_ROUTINE ThreadStart(ThreadBody body) noexcept {
  g_threadBody = body;
  return StartThreadBody;
}

}  // namespace korvane
