#include "wine_automation/control.h"

#include <algorithm>

#include "wine_automation/ask.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

constexpr int kLongestClassName = 256;

LONG_PTR StyleOf(HWND window) {
  return GetWindowLongPtrW(window, GWL_STYLE);
}

struct Children {
  HWND parent;
  std::vector<HWND> windows;
};

// No exception may pass through the system's enumeration: memory that runs out ends it early.
BOOL CALLBACK AddChild(HWND window, LPARAM parameter) noexcept try {
  auto& children = *reinterpret_cast<Children*>(parameter);
  if (ParentOf(window) == children.parent && IsWindowVisible(window)) {
    children.windows.push_back(window);
  }
  return TRUE;
} catch (...) {
  return FALSE;
}

struct WindowsAt {
  POINT point;
  std::vector<HWND> windows;
};

BOOL CALLBACK AddWindowAt(HWND window, LPARAM parameter) noexcept try {
  auto& found = *reinterpret_cast<WindowsAt*>(parameter);
  RECT rect{};
  if (GetWindowRect(window, &rect) && PtInRect(&rect, found.point)) {
    found.windows.push_back(window);
  }
  return TRUE;
} catch (...) {
  return FALSE;
}

RECT ScreenRect() {
  const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
  const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  return {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN), top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

// The client area in screen pixels; empty when the window has gone.
RECT ClientRectOf(HWND window) {
  RECT rect{};
  GetClientRect(window, &rect);
  MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

}  // namespace

HWND ParentOf(HWND window) {
  return GetAncestor(window, GA_PARENT);
}

bool IsTopLevel(HWND window) {
  return ParentOf(window) == GetDesktopWindow();
}

CONTROLTYPEID ControlTypeOf(HWND window) {
  return ControlClassOf(window).Type(window);
}

uia::PropertyValue NameOf(HWND window) {
  return ControlClassOf(window).Name(window);
}

uia::Text ClassNameOf(HWND window) {
  WCHAR name[kLongestClassName + 1] = {};
  const int length = GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return uia::Text(name, static_cast<std::size_t>(length));
}

uia::Text AutomationIdOf(HWND window) {
  if ((StyleOf(window) & WS_CHILD) == 0) {
    return {};
  }
  const int id = GetDlgCtrlID(window);
  return id == 0 || id == -1 ? uia::Text() : std::to_wstring(id);
}

uia::Text TitleOf(HWND window) {
  uia::Text title(256, L'\0');
  for (;;) {
    const auto length =
        static_cast<std::size_t>(InternalGetWindowText(window, title.data(), static_cast<int>(title.size())));
    if (length + 1 < title.size()) {
      title.resize(length);
      return title;
    }
    title.resize(title.size() * 2);
  }
}

std::optional<uia::Text> TextOf(HWND window) {
  const std::optional<LONG_PTR> length = Ask(window, WM_GETTEXTLENGTH, 0, 0);
  if (!length || *length < 0) {
    return std::nullopt;
  }
  uia::Text text(static_cast<std::size_t>(*length) + 1, L'\0');
  const std::optional<LONG_PTR> copied = Ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  if (!copied || *copied < 0) {
    return std::nullopt;
  }
  text.resize(std::min(text.size() - 1, static_cast<std::size_t>(*copied)));
  return text;
}

std::vector<HWND> ChildrenOf(HWND window) {
  Children children{window, {}};
  const auto parameter = reinterpret_cast<LPARAM>(&children);
  if (window == GetDesktopWindow()) {
    EnumWindows(AddChild, parameter);
  } else {
    EnumChildWindows(window, AddChild, parameter);
  }
  return std::move(children.windows);
}

std::vector<HWND> DescendantsAt(HWND window, POINT point) {
  WindowsAt found{point, {}};
  EnumChildWindows(window, AddWindowAt, reinterpret_cast<LPARAM>(&found));
  return std::move(found.windows);
}

std::optional<RECT> VisibleRect(HWND window) {
  RECT visible{};
  if (!IsWindowVisible(window) || !GetWindowRect(window, &visible)) {
    return std::nullopt;
  }
  const HWND desktop = GetDesktopWindow();
  for (HWND above = ParentOf(window); above != nullptr && above != desktop; above = ParentOf(above)) {
    const RECT inside = ClientRectOf(above);
    if (!IntersectRect(&visible, &visible, &inside)) {
      return std::nullopt;
    }
  }
  const RECT screen = ScreenRect();
  if (!IntersectRect(&visible, &visible, &screen)) {
    return std::nullopt;
  }
  return visible;
}

}  // namespace wine_automation
