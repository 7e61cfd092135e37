/**
 * @file stage.h
 * The order form as something to automate, for examples in any language. It is no part of korvane: on Windows it is
 * a DLL of its own, which runs order_form.exe from its folder; elsewhere it comes in one shared library with korvane
 * and the scripted desktop on which both work.
 */
#ifndef KORVANE_SAMPLES_STAGE_H
#define KORVANE_SAMPLES_STAGE_H

#include "korvane/korvane.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Controls of the form. */
enum { STAGE_NAME = 101, STAGE_ARTICLE = 201, STAGE_NOTE = 202, STAGE_SUBMIT = 301, STAGE_STATUS = 401 };

/** Opens the form with its corner at the point, closing an open one. @return 0, or -1 when it does not come up. */
int stageOpenForm(int x, int y);
void stageCloseForm(void);
/** @return the open form's window, else null. */
HWND stageFormWindow(void);
/** Where a user would click. @return 0, or -1 without such a control. */
int stageCentreOf(int control, int32_t* x, int32_t* y);

#ifdef __cplusplus
}
#endif

#endif /* KORVANE_SAMPLES_STAGE_H */
