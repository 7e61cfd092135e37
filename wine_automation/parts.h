// Questions about the parts of a control. They are answered in the thread that the control belongs to, where its class
// may be asked by messages with memory, and menus can be read.
#pragma once

#include <optional>
#include <vector>

#include "wine_automation/control_class.h"

namespace wine_automation {

// What a search reads of a part, told with the list of parts.
struct PartFacts {
  Part part = kControlItself;
  CONTROLTYPEID type = 0;
  WCHAR automationId[24] = {};
};

// All of these answer as a control without parts does when the control's thread cannot be reached: it hangs, or its
// program is a 32-bit one.
bool CanBeAsked(HWND control);
bool HasPart(HWND control, Part part);
Part ParentOfPart(HWND control, Part part);
// Nothing when the control's thread cannot be reached.
std::optional<std::vector<PartFacts>> PartsOf(HWND control, Part parent);
Part PartAt(HWND control, POINT onScreen);
uia::PropertyValue PropertyOfPart(HWND control, Part part, PROPERTYID property);
std::optional<RECT> RectOfPart(HWND control, Part part);
std::optional<RECT> ClickRectOfPart(HWND control, Part part);
// As of ControlClass.
HWND WindowBelow(HWND control);
HWND WindowAbove(HWND control);

}  // namespace wine_automation
