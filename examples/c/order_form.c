/* Captures four elements of the order form, opens the form elsewhere and fills it in by the records. */
#include <korvane/korvane.h>
#include <stdio.h>
#include <windows.h>

#include "stage.h"

enum { TIMEOUT_MS = 3000 };

static int Capture(int control, TargetRecord* record) {
  int32_t x = 0;
  int32_t y = 0;
  if (stageCentreOf(control, &x, &y) != 0) {
    return KORVANE_NOT_FOUND;
  }
  const int result = captureTargetAtPoint(record, x, y);
  record->identificationMethod = KORVANE_METHOD_AUTOMATION_ID;
  return result;
}

static int Paste(const TargetRecord* record, HWND window, const KorvaneChar* text) {
  const int result = setClipboardText(text);
  return result != KORVANE_OK ? result : pasteToTargetWithVerifyEx(record, window, TIMEOUT_MS);
}

static int Order(void) {
  TargetRecord name;
  TargetRecord article;
  TargetRecord submit;
  TargetRecord status;
  int result = stageOpenForm(40, 40) == 0 ? KORVANE_OK : KORVANE_NOT_FOUND;
  if (result == KORVANE_OK)
    result = Capture(STAGE_NAME, &name);
  if (result == KORVANE_OK)
    result = Capture(STAGE_ARTICLE, &article);
  if (result == KORVANE_OK)
    result = Capture(STAGE_SUBMIT, &submit);
  if (result == KORVANE_OK)
    result = Capture(STAGE_STATUS, &status);
  if (result != KORVANE_OK)
    return result;

  /* Anywhere else, at any later time. */
  if (stageOpenForm(420, 300) != 0)
    return KORVANE_NOT_FOUND;
  HWND form = stageFormWindow();
  result = verifyTarget(&name, form);
  if (result == KORVANE_OK)
    result = Paste(&name, form, L"Ren\u00E9e Garc\u00EDa");
  if (result == KORVANE_OK)
    result = Paste(&article, form, L"Brass compass");
  if (result == KORVANE_OK)
    result = clickTarget(&submit, form);
  if (result == KORVANE_OK)
    result = waitForTargetContainsPartialText(&status, form, L"Submitted", TIMEOUT_MS);
  if (result != KORVANE_OK)
    return result;

  KorvaneChar* shown = getTargetText(&status, form);
  char utf8[1024];
  if (shown != NULL && WideCharToMultiByte(CP_UTF8, 0, shown, -1, utf8, sizeof utf8, NULL, NULL) > 0) {
    SetConsoleOutputCP(CP_UTF8);
    puts(utf8);
  }
  freeTextResult(shown);
  return KORVANE_OK;
}

int main(void) {
  initializeLog(L"korvane.log");
  int result = initializeAutomation();
  if (result == KORVANE_OK)
    result = Order();
  stageCloseForm();
  cleanupAutomation();
  if (result != KORVANE_OK) {
    printf("failed with code %d; korvane.log tells why\n", result);
  }
  return result == KORVANE_OK ? 0 : 1;
}
