// Combo boxes: the shown text, the button that drops the list, and the list while it shows.
#include "wine_automation/combo_box.h"

#include "wine_automation/ask.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

std::optional<COMBOBOXINFO> InfoOf(HWND comboBox) {
  COMBOBOXINFO info{};
  info.cbSize = sizeof info;
  const std::optional<LONG_PTR> answer = AskWith(comboBox, CB_GETCOMBOBOXINFO, 0, info);
  return answer && *answer != 0 ? std::optional(info) : std::nullopt;
}

bool IsDropped(HWND comboBox) {
  return Ask(comboBox, CB_GETDROPPEDSTATE).value_or(0) != 0;
}

class ComboBox final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kComboBoxType;
  }

  PropertyValue Name(HWND control) const override {
    return LabelBefore(control);
  }

  PropertyValue State(HWND control, PROPERTYID property) const override {
    switch (property) {
      case UIA_ValueValuePropertyId:
        return Answered(TextOf(control));
      case kExpandCollapseState:
        return NumberValue(IsDropped(control) ? 1 : 0);
      default:
        return {};
    }
  }

  // Its list always shows when it is a simple one. The extended combo box has a plain one in it.
  bool MayHaveParts(HWND control) const override {
    return (GetWindowLongPtrW(control, GWL_STYLE) & 3) != CBS_SIMPLE && ClassNameOf(control) != L"ComboBoxEx32";
  }

  bool HasPart(HWND, Part part) const override {
    return part <= kDropDown;
  }

  std::vector<Part> PartsOf(HWND, Part parent) const override {
    return parent == kControlItself ? std::vector<Part>{kDropDown} : std::vector<Part>();
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    return PartHolds(control, kDropDown, onScreen) ? kDropDown : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part, PROPERTYID property) const override {
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(kButtonType);
      case UIA_AutomationIdPropertyId:
        return TextValue(L"DropDown");
      case UIA_NamePropertyId:
        return TextValue(IsDropped(control) ? L"Close" : L"Open");
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part) const override {
    const std::optional<COMBOBOXINFO> info = InfoOf(control);
    return info ? std::optional(OnScreen(control, info->rcButton)) : std::nullopt;
  }

  HWND WindowBelow(HWND control) const override {
    return IsDropped(control) ? DroppedListOf(control) : nullptr;
  }

 private:
  static constexpr Part kDropDown = 1;
};

}  // namespace

HWND DroppedListOf(HWND comboBox) {
  const std::optional<COMBOBOXINFO> info = InfoOf(comboBox);
  return info && info->hwndList != nullptr && IsTopLevel(info->hwndList) ? info->hwndList : nullptr;
}

const ControlClass& ComboBoxClass() {
  static const ComboBox comboBox;
  return comboBox;
}

}  // namespace wine_automation
