// Menus: the bar of a window, and popups, which are windows of their own. A command's number makes an AutomationId; an
// item that opens another menu has none, as its number is a handle.
#include <algorithm>

#include "wine_automation/ask.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

std::optional<MENUITEMINFOW> ItemOf(HMENU menu, UINT position) {
  MENUITEMINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = MIIM_FTYPE | MIIM_ID | MIIM_STATE | MIIM_SUBMENU;
  return GetMenuItemInfoW(menu, position, TRUE, &info) ? std::optional(info) : std::nullopt;
}

std::optional<uia::Text> TextOfItem(HMENU menu, UINT position) {
  const int length = GetMenuStringW(menu, position, nullptr, 0, MF_BYPOSITION);
  if (length <= 0) {
    return uia::Text();
  }
  uia::Text text(static_cast<std::size_t>(length), L'\0');
  GetMenuStringW(menu, position, text.data(), length + 1, MF_BYPOSITION);
  return WithoutMnemonic(text);
}

PropertyValue PropertyOfItem(HMENU menu, UINT position, PROPERTYID property) {
  const std::optional<MENUITEMINFOW> item = ItemOf(menu, position);
  if (!item) {
    return Answered(std::nullopt);
  }
  const bool isSeparator = (item->fType & MFT_SEPARATOR) != 0;
  switch (property) {
    case UIA_ControlTypePropertyId:
      return NumberValue(isSeparator ? kSeparatorType : kMenuItemType);
    case UIA_AutomationIdPropertyId:
      return TextValue(isSeparator || item->hSubMenu != nullptr ? uia::Text() : L"Item " + std::to_wstring(item->wID));
    case UIA_NamePropertyId:
      return Answered(TextOfItem(menu, position));
    case kIsEnabled:
      return isSeparator ? PropertyValue() : BoolValue((item->fState & MFS_DISABLED) == 0);
    case kToggleState:
      return (item->fState & MFS_CHECKED) != 0 ? NumberValue(1) : PropertyValue();
    default:
      return {};
  }
}

std::optional<RECT> RectOfItem(HWND window, HMENU menu, UINT position) {
  RECT rect{};
  return GetMenuItemRect(window, menu, position, &rect) ? std::optional(rect) : std::nullopt;
}

// From 1; 0 where there is none.
Part ItemAt(HWND window, HMENU menu, POINT onScreen) {
  const int position = MenuItemFromPoint(window, menu, onScreen);
  return position < 0 ? 0 : static_cast<Part>(position) + 1;
}

Part CountOf(HMENU menu) {
  return static_cast<Part>(std::max(0, GetMenuItemCount(menu)));
}

// Any top-level window.
class Window final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return UIA_WindowControlTypeId;
  }

  bool MayHaveParts(HWND control) const override {
    return GetMenu(control) != nullptr;
  }

  bool HasPart(HWND control, Part part) const override {
    const HMENU menu = GetMenu(control);
    return menu != nullptr && part <= kBar + CountOf(menu);
  }

  Part ParentOf(HWND, Part part) const override {
    return part == kBar ? kControlItself : kBar;
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    const HMENU menu = GetMenu(control);
    if (menu == nullptr || parent > kBar) {
      return {};
    }
    if (parent == kControlItself) {
      return {kBar};
    }
    std::vector<Part> items = NumberedParts(CountOf(menu));
    for (Part& item : items) {
      item += kBar;
    }
    return items;
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    if (const Part item = ItemAt(control, GetMenu(control), onScreen); item != 0) {
      return kBar + item;
    }
    return PartHolds(control, kBar, onScreen) ? kBar : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    if (part > kBar) {
      return PropertyOfItem(GetMenu(control), part - kBar - 1, property);
    }
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

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    if (part > kBar) {
      return RectOfItem(control, GetMenu(control), part - kBar - 1);
    }
    MENUBARINFO info{};
    info.cbSize = sizeof info;
    return GetMenuBarInfo(control, OBJID_MENU, 0, &info) ? std::optional(info.rcBar) : std::nullopt;
  }

 private:
  // Its items follow it.
  static constexpr Part kBar = 1;
};

class PopupMenu final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kMenuType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= CountOf(MenuOf(control));
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    return parent == kControlItself ? NumberedParts(CountOf(MenuOf(control))) : std::vector<Part>();
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    return ItemAt(control, MenuOf(control), onScreen);
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    return PropertyOfItem(MenuOf(control), part - 1, property);
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    return RectOfItem(control, MenuOf(control), part - 1);
  }

 private:
  static HMENU MenuOf(HWND popup) {
    return reinterpret_cast<HMENU>(Ask(popup, MN_GETHMENU).value_or(0));
  }
};

}  // namespace

const ControlClass& WindowClass() {
  static const Window window;
  return window;
}

const ControlClass& PopupMenuClass() {
  static const PopupMenu popup;
  return popup;
}

}  // namespace wine_automation
