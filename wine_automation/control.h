// What one real window tells of itself, in whatever process it lives.
#pragma once

#include <optional>
#include <vector>

#include "standin/uia/tree.h"

namespace wine_automation {

namespace uia = standin::uia;

// The parent window; the desktop window for a top-level window, null for the desktop window.
HWND ParentOf(HWND window);
bool IsTopLevel(HWND window);
CONTROLTYPEID ControlTypeOf(HWND window);
uia::PropertyValue NameOf(HWND window);
uia::Text ClassNameOf(HWND window);
// The control id in decimal; empty for 0, for -1, which many controls share, and for top-level windows.
uia::Text AutomationIdOf(HWND window);
// The title that the system keeps for the window, without asking its program.
uia::Text TitleOf(HWND window);
// The text that the window's program answers.
std::optional<uia::Text> TextOf(HWND window);

// Direct children that are visible, in tab order; of the desktop topmost first.
std::vector<HWND> ChildrenOf(HWND window);
// All windows below one whose rectangle holds the point, in tab order.
std::vector<HWND> DescendantsAt(HWND window, POINT point);
// The window's part that can be seen inside its parents and the screen; nothing when it is hidden.
std::optional<RECT> VisibleRect(HWND window);

}  // namespace wine_automation
