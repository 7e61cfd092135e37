// A DLL that does nothing, built as korvane.dll is.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD /*reason*/, LPVOID /*reserved*/) {
  return TRUE;
}
