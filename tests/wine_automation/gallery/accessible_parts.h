// A button and a check box that a window draws itself and tells of through IAccessible.
#pragma once

#include <windows.h>

// What the window answers to WM_GETOBJECT.
LRESULT AnswerAccessible(HWND window, WPARAM wParam, LPARAM lParam);
