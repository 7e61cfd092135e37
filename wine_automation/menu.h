// Items of menus, for the thread of the window that shows them. A command's number makes an AutomationId; an item that
// opens another menu has none, as its number is a handle.
#pragma once

#include "wine_automation/control_class.h"

namespace wine_automation {

uia::PropertyValue PropertyOfMenuItem(HMENU menu, UINT position, PROPERTYID property);
std::optional<RECT> RectOfMenuItem(HWND window, HMENU menu, UINT position);
// From 1; 0 where there is none.
Part MenuItemAt(HWND window, HMENU menu, POINT onScreen);
Part MenuItemCount(HMENU menu);

}  // namespace wine_automation
