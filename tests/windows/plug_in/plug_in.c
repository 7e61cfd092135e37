/* A plug-in that brings the library along, and ends it while it is itself being unloaded, under the loader's lock. */
#include <windows.h>

typedef void Function(void);

static HMODULE library;

static void Call(const char* name) {
  FARPROC address = GetProcAddress(library, name);
  ((Function*)(void*)address)();
}

__declspec(dllexport) void Begin(const WCHAR* path);
__declspec(dllexport) void Begin(const WCHAR* path) {
  library = LoadLibraryW(path);
  Call("startCancelMonitor");
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  (void)module;
  if (reason == DLL_PROCESS_DETACH && reserved == NULL && library != NULL) {
    Call("cleanupAutomation");
    FreeLibrary(library);
  }
  return TRUE;
}
