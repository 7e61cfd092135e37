#include "platform/thread_start.h"

// Nothing is unloaded here, so that the order of the last instructions does not matter.
DWORD WINAPI StartThreadBody(LPVOID parameter) {
  if (const HANDLE event = ThreadBody(parameter)) {
    SetEvent(event);
  }
  return 0;
}
