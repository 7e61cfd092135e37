// The element and the window under a screen point, and the window nearest to an element.
#pragma once

#include "platform/owners.h"

namespace korvane {

// The element at a point, or none; creates a missing automation context. Every step is logged.
ElementPtr GetElementAtPoint(POINT point);

struct ElementAtCursor {
  ElementPtr element;  // none when something failed
  POINT cursor{};      // where the element was looked for
};

// The element under the mouse cursor, traced to the console.
ElementAtCursor GetElementAtCursor();

// Where the window of an element was looked for, in this order.
enum class WindowSearch {
  NoOwnWindow,
  AtPoint,
  NotAtPoint,
  AtAncestor,
  Nowhere,
};

// The element's own window, else the one under its point, else its nearest ancestor's; null when there is none. Beyond
// its own window, `tell(WindowSearch, HWND)` is told every step with the window that it found, if any.
template <class Tell>
HWND FindWindowOf(IUIAutomationElement* element, POINT point, Tell&& tell);

// The deepest window under a point, or null.
HWND GetWindowFromCoordinates(int x, int y);

// The window of the element, or of its nearest ancestor that has one, at most 20 levels up; null when there is none.
HWND GetNearestWindowHandle(IUIAutomationElement* element);

// The element's own window; null when it has none or cannot be asked.
HWND NativeWindowOf(IUIAutomationElement* element);

template <class Tell>
HWND FindWindowOf(IUIAutomationElement* element, POINT point, Tell&& tell) {
  if (const HWND own = NativeWindowOf(element)) {
    return own;
  }
  tell(WindowSearch::NoOwnWindow, nullptr);
  if (const HWND atPoint = GetWindowFromCoordinates(point.x, point.y)) {
    tell(WindowSearch::AtPoint, atPoint);
    return atPoint;
  }
  tell(WindowSearch::NotAtPoint, nullptr);
  const HWND nearest = GetNearestWindowHandle(element);
  tell(nearest != nullptr ? WindowSearch::AtAncestor : WindowSearch::Nowhere, nearest);
  return nearest;
}

}  // namespace korvane
