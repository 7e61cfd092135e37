// The element and the window under a screen point, and the window nearest to an element.
#pragma once

#include <optional>

#include "platform/owners.h"

// The element at a point, or none; creates a missing automation context. Every step is logged.
ElementPtr GetElementAtPoint(POINT point);

struct ElementAtCursor {
  ElementPtr element;  // none when something failed
  POINT cursor{};      // where the element was looked for
};

// The element under the mouse cursor, traced to the console.
ElementAtCursor GetElementAtCursor();

// The deepest window under a point, or null.
HWND GetWindowFromCoordinates(int x, int y);

// The window of the element, or of its nearest ancestor that has one, at most 20 levels up; null when there is none.
HWND GetNearestWindowHandle(IUIAutomationElement* element);

// The element's own window; null when it has none or cannot be asked.
HWND NativeWindowOf(IUIAutomationElement* element);
