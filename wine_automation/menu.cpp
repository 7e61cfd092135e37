#include "wine_automation/menu.h"

#include <algorithm>

#include "wine_automation/ask.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"

namespace wine_automation {

using uia::PropertyValue;

namespace {

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

}  // namespace

PropertyValue PropertyOfMenuItem(HMENU menu, UINT position, PROPERTYID property) {
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

std::optional<RECT> RectOfMenuItem(HWND window, HMENU menu, UINT position) {
  RECT rect{};
  return GetMenuItemRect(window, menu, position, &rect) ? std::optional(rect) : std::nullopt;
}

Part MenuItemAt(HWND window, HMENU menu, POINT onScreen) {
  const int position = MenuItemFromPoint(window, menu, onScreen);
  return position < 0 ? 0 : static_cast<Part>(position) + 1;
}

Part MenuItemCount(HMENU menu) {
  return static_cast<Part>(std::max(0, GetMenuItemCount(menu)));
}

namespace {

class PopupMenu final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kMenuType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= MenuItemCount(MenuOf(control));
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    return parent == kControlItself ? NumberedParts(MenuItemCount(MenuOf(control))) : std::vector<Part>();
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    return MenuItemAt(control, MenuOf(control), onScreen);
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    return PropertyOfMenuItem(MenuOf(control), part - 1, property);
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    return RectOfMenuItem(control, MenuOf(control), part - 1);
  }

 private:
  static HMENU MenuOf(HWND popup) {
    return reinterpret_cast<HMENU>(Ask(popup, MN_GETHMENU).value_or(0));
  }
};

}  // namespace

const ControlClass& PopupMenuClass() {
  static const PopupMenu popup;
  return popup;
}

}  // namespace wine_automation
