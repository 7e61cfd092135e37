/* The public header as a host compiles it, as C and as C++: by itself, and with the platform's own header around it. */
#if defined(PLATFORM_HEADER_BEFORE)
#include PLATFORM_HEADER_BEFORE
#endif
#include "korvane/korvane.h"
/* Twice does no harm. */
#include "korvane/korvane.h"
#if defined(PLATFORM_HEADER_AFTER)
#include PLATFORM_HEADER_AFTER
#endif

#include <stddef.h>

#ifdef __cplusplus
#define LAYOUT static_assert
#else
#define LAYOUT _Static_assert
#endif

LAYOUT(sizeof(KorvaneChar) == 2, "UTF-16");
LAYOUT(sizeof(TargetRecord) == 3256, "TargetRecord");
LAYOUT(offsetof(TargetRecord, automationId) == 0, "automationId");
LAYOUT(offsetof(TargetRecord, hwnd) == 512, "hwnd");
LAYOUT(offsetof(TargetRecord, x) == 520, "x");
LAYOUT(offsetof(TargetRecord, y) == 524, "y");
LAYOUT(offsetof(TargetRecord, identificationMethod) == 528, "identificationMethod");
LAYOUT(offsetof(TargetRecord, pathLength) == 532, "pathLength");
LAYOUT(offsetof(TargetRecord, controlTypes) == 536, "controlTypes");
LAYOUT(offsetof(TargetRecord, classNames) == 616, "classNames");
LAYOUT(offsetof(TargetRecord, childIndices) == 3176, "childIndices");
LAYOUT(sizeof(WindowInfo) == 1032, "WindowInfo");
LAYOUT(offsetof(WindowInfo, title) == 0, "title");
LAYOUT(offsetof(WindowInfo, processName) == 512, "processName");
LAYOUT(offsetof(WindowInfo, window) == 1024, "window");

/* A host's own use of it. */
int CaptureAndClick(int x, int y);
int CaptureAndClick(int x, int y) {
  TargetRecord target;
  WindowInfo info;
  HWND window = findWindowByClick();
  int result = captureTargetAtPoint(&target, x, y);
  if (result == KORVANE_OK && getWindowInfo(window, &info) == KORVANE_OK) {
    result = clickTarget(&target, info.window);
  }
  return result;
}
