#include "automation/cleanup.h"
#include "platform/platform.h"

// Loading makes the empty cache of points and nothing else: all other state starts as it is in the image. While the
// process ends (`reserved` is not null) the other threads are gone already, with whatever they held, and the system
// takes everything back: nothing is touched then.
extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
    korvane::ShutdownLibrary(korvane::LibraryEnd::Unload);
  }
  return TRUE;
}
