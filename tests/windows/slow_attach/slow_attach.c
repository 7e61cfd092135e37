/* A library that takes its time to attach, and holds the loader's lock meanwhile. */
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  (void)module;
  (void)reserved;
  if (reason == DLL_PROCESS_ATTACH) {
    HANDLE attaching = OpenEventW(EVENT_MODIFY_STATE, FALSE, L"korvane tests: attaching");
    HANDLE finish = OpenEventW(SYNCHRONIZE, FALSE, L"korvane tests: finish attaching");
    SetEvent(attaching);
    WaitForSingleObject(finish, 10000);
    CloseHandle(attaching);
    CloseHandle(finish);
  }
  return TRUE;
}
