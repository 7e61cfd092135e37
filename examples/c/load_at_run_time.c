/* A host that runs without korvane.dll too, and says so. */
#include <stdio.h>
#include <windows.h>

#include <korvane/korvane.h>

#define FIND(name) name##_ = (Type_##name)(void (*)(void))GetProcAddress(library, #name)

typedef int (*Type_initializeAutomation)(void);
typedef void (*Type_cleanupAutomation)(void);
typedef int (*Type_getWindowInfo)(HWND, WindowInfo*);

int main(void) {
  /* From the program's own folder, and what it needs from the system's: the current folder may be anybody's. */
  const DWORD folders = LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;
  HMODULE library = LoadLibraryExW(L"korvane.dll", NULL, folders);
  if (library == NULL) {
    printf("no korvane.dll beside this program (error %lu)\n", GetLastError());
    return 1;
  }
  const Type_initializeAutomation FIND(initializeAutomation);
  const Type_cleanupAutomation FIND(cleanupAutomation);
  const Type_getWindowInfo FIND(getWindowInfo);
  if (initializeAutomation_ == NULL || cleanupAutomation_ == NULL || getWindowInfo_ == NULL) {
    printf("this korvane.dll is too old\n");
    FreeLibrary(library);
    return 1;
  }

  WindowInfo info;
  int result = initializeAutomation_();
  if (result == KORVANE_OK)
    result = getWindowInfo_(GetDesktopWindow(), &info);
  printf("code %d, process \"%ls\"\n", result, result == KORVANE_OK ? info.processName : L"");
  cleanupAutomation_();
  FreeLibrary(library);
  return result == KORVANE_OK ? 0 : 1;
}
