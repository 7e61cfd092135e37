// What one real window tells of itself, in whatever process it lives. A window that does not answer within a second
// counts as failed, so that one hung program cannot hang its observers.
#pragma once

#include <optional>
#include <vector>

#include "standin/uia/tree.h"

namespace standin::hwnd {

inline constexpr CONTROLTYPEID kButtonType = 50000;
inline constexpr CONTROLTYPEID kEditType = 50004;
inline constexpr CONTROLTYPEID kListItemType = 50007;
inline constexpr CONTROLTYPEID kListType = 50008;
inline constexpr CONTROLTYPEID kTextType = 50020;
inline constexpr CONTROLTYPEID kGroupType = 50026;
inline constexpr CONTROLTYPEID kPaneType = 50033;

// The parent window; the desktop window for a top-level window, null for the desktop window.
HWND ParentOf(HWND window);
bool IsTopLevel(HWND window);
CONTROLTYPEID ControlTypeOf(HWND window);
uia::Text ClassNameOf(HWND window);
// The control id in decimal; empty for 0 and for top-level windows.
uia::Text AutomationIdOf(HWND window);
// The title that the system keeps for the window, without asking its program.
uia::Text TitleOf(HWND window);
// The text that the window's program answers.
std::optional<uia::Text> TextOf(HWND window);

// Direct children in tab order, hidden ones too; of the desktop the visible top-level windows, topmost first.
std::vector<HWND> ChildrenOf(HWND window);
// The window's part that can be seen inside its parents and the screen; nothing when it is hidden.
std::optional<RECT> VisibleRect(HWND window);

// Rows of list boxes.
int RowCount(HWND list);
std::optional<uia::Text> RowText(HWND list, int row);
// In screen pixels.
std::optional<RECT> RowRect(HWND list, int row);

}  // namespace standin::hwnd
