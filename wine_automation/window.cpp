// Top-level windows: the title bar with its buttons, and the menu bar.
#include <iterator>

#include "wine_automation/ask.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"
#include "wine_automation/menu.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

// Of each bar the parts follow it.
constexpr Part kMenuBar = 1;
constexpr Part kTitleBar = 0x10000;

struct TitleButton {
  LONG_PTR hit;
  int state;  // its place in TITLEBARINFO
  const WCHAR* name;
};

constexpr TitleButton kTitleButtons[] = {
    {HTMINBUTTON, 2, L"Minimize"}, {HTMAXBUTTON, 3, L"Maximize"}, {HTCLOSE, 5, L"Close"}};

const TitleButton& ButtonOf(Part part) {
  return kTitleButtons[part - kTitleBar - 1];
}

// By default the window manager of the X server draws title bars, where no program of Wine's sees them.
bool WineDrawsTitleBars() {
  WCHAR value[8] = {};
  DWORD size = sizeof value;
  const bool isSet = RegGetValueW(HKEY_CURRENT_USER, L"Software\\Wine\\X11 Driver", L"Decorated", RRF_RT_REG_SZ,
                                  nullptr, value, &size) == ERROR_SUCCESS;
  return isSet && uia::TextView(L"yYtT1").find(value[0]) == uia::TextView::npos;
}

bool HasTitleBar(HWND window) {
  static const bool canHave = WineDrawsTitleBars();
  return canHave && (GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
}

LONG_PTR HitAt(HWND window, LONG x, LONG y) {
  return Ask(window, WM_NCHITTEST, 0, MAKELPARAM(x, y)).value_or(HTNOWHERE);
}

std::optional<TITLEBARINFO> TitleBarOf(HWND window) {
  TITLEBARINFO info{};
  info.cbSize = sizeof info;
  return GetTitleBarInfo(window, &info) ? std::optional(info) : std::nullopt;
}

std::optional<RECT> TitleBarRect(HWND window) {
  const auto bar = TitleBarOf(window);
  return bar ? std::optional(bar->rcTitleBar) : std::nullopt;
}

// Said by the system, without a look for its place: each search of a window passes here.
bool HasButton(HWND window, const TitleButton& button) {
  const auto bar = TitleBarOf(window);
  const bool isToolWindow = (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW) != 0;
  return bar && (bar->rgstate[button.state] & STATE_SYSTEM_INVISIBLE) == 0 && (!isToolWindow || button.hit == HTCLOSE);
}

// Where the window itself takes a click for one on the button.
std::optional<RECT> ButtonRect(HWND window, LONG_PTR hit) {
  std::optional<RECT> bar = TitleBarRect(window);
  if (!bar) {
    return std::nullopt;
  }
  const LONG middle = bar->top + (bar->bottom - bar->top) / 2;
  RECT button = {0, bar->top, 0, bar->bottom};
  // The buttons stand together at the right end.
  for (LONG x = bar->right - 1; x >= bar->left; --x) {
    const LONG_PTR there = HitAt(window, x, middle);
    if (there == HTCAPTION) {
      break;
    }
    if (there == hit) {
      button.left = x;
      button.right = button.right == 0 ? x + 1 : button.right;
    }
  }
  return button.right == 0 ? std::nullopt : std::optional(button);
}

PropertyValue PropertyOfTitleBar(PROPERTYID property) {
  switch (property) {
    case UIA_ControlTypePropertyId:
      return NumberValue(kTitleBarType);
    case UIA_AutomationIdPropertyId:
      return TextValue(L"TitleBar");
    case UIA_NamePropertyId:
      return TextValue({});
    default:
      return {};
  }
}

PropertyValue PropertyOfTitleButton(HWND window, Part part, PROPERTYID property) {
  switch (property) {
    case UIA_ControlTypePropertyId:
      return NumberValue(kButtonType);
    case UIA_AutomationIdPropertyId:
    case UIA_NamePropertyId:
      return TextValue(ButtonOf(part).hit == HTMAXBUTTON && IsZoomed(window) ? L"Restore" : ButtonOf(part).name);
    default:
      return {};
  }
}

PropertyValue PropertyOfMenuBar(PROPERTYID property) {
  switch (property) {
    case UIA_ControlTypePropertyId:
      return NumberValue(kMenuBarType);
    case UIA_AutomationIdPropertyId:
      return TextValue(L"MenuBar");
    case UIA_NamePropertyId:
      return TextValue(L"Application");
    default:
      return {};
  }
}

std::optional<RECT> MenuBarRect(HWND window) {
  MENUBARINFO info{};
  info.cbSize = sizeof info;
  return GetMenuBarInfo(window, OBJID_MENU, 0, &info) ? std::optional(info.rcBar) : std::nullopt;
}

class Window final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return UIA_WindowControlTypeId;
  }

  bool MayHaveParts(HWND control) const override {
    return HasTitleBar(control) || GetMenu(control) != nullptr;
  }

  bool HasPart(HWND control, Part part) const override {
    if (part >= kTitleBar) {
      return HasTitleBar(control) && (part == kTitleBar || (part <= kTitleBar + std::size(kTitleButtons) &&
                                                            HasButton(control, ButtonOf(part))));
    }
    const HMENU menu = GetMenu(control);
    return menu != nullptr && part <= kMenuBar + MenuItemCount(menu);
  }

  Part ParentOf(HWND, Part part) const override {
    if (part == kTitleBar || part == kMenuBar) {
      return kControlItself;
    }
    return part > kTitleBar ? kTitleBar : kMenuBar;
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    std::vector<Part> parts;
    if (parent == kControlItself) {
      if (HasTitleBar(control)) {
        parts.push_back(kTitleBar);
      }
      if (GetMenu(control) != nullptr) {
        parts.push_back(kMenuBar);
      }
    } else if (parent == kTitleBar) {
      for (Part part = kTitleBar + 1; part <= kTitleBar + std::size(kTitleButtons); ++part) {
        if (HasButton(control, ButtonOf(part))) {
          parts.push_back(part);
        }
      }
    } else if (parent == kMenuBar) {
      parts = NumberedParts(MenuItemCount(GetMenu(control)));
      for (Part& part : parts) {
        part += kMenuBar;
      }
    }
    return parts;
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    const LONG_PTR hit = HitAt(control, onScreen.x, onScreen.y);
    if (hit == HTMENU) {
      return kMenuBar + MenuItemAt(control, GetMenu(control), onScreen);
    }
    for (Part part = kTitleBar + 1; part <= kTitleBar + std::size(kTitleButtons); ++part) {
      if (hit == ButtonOf(part).hit) {
        return part;
      }
    }
    return hit == HTCAPTION || hit == HTSYSMENU ? kTitleBar : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    if (part > kTitleBar) {
      return PropertyOfTitleButton(control, part, property);
    }
    if (part == kTitleBar) {
      return PropertyOfTitleBar(property);
    }
    return part == kMenuBar ? PropertyOfMenuBar(property)
                            : PropertyOfMenuItem(GetMenu(control), part - kMenuBar - 1, property);
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    if (part > kTitleBar) {
      return ButtonRect(control, ButtonOf(part).hit);
    }
    if (part == kTitleBar) {
      return TitleBarRect(control);
    }
    return part == kMenuBar ? MenuBarRect(control) : RectOfMenuItem(control, GetMenu(control), part - kMenuBar - 1);
  }
};

}  // namespace

const ControlClass& WindowClass() {
  static const Window window;
  return window;
}

}  // namespace wine_automation
