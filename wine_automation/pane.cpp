// Windows of no known class. What a program tells of its own parts through IAccessible is believed, for one level.
#include <memory>

#include "wine_automation/ask.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"
// After the platform's own.
#include <oleacc.h>

namespace wine_automation {
namespace {

using uia::PropertyValue;

constexpr IID kAccessible = {0x618736E0, 0x3C3D, 0x11CF, {0x81, 0x0C, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

struct Release {
  void operator()(IUnknown* object) const {
    object->Release();
  }
};
using Accessible = std::unique_ptr<IAccessible, Release>;

struct KnownRole {
  LONG role;
  CONTROLTYPEID type;
};
constexpr KnownRole kKnownRoles[] = {
    {ROLE_SYSTEM_PUSHBUTTON, kButtonType},       {ROLE_SYSTEM_CHECKBUTTON, kCheckBoxType},
    {ROLE_SYSTEM_COMBOBOX, kComboBoxType},       {ROLE_SYSTEM_GRAPHIC, kImageType},
    {ROLE_SYSTEM_GROUPING, kGroupType},          {ROLE_SYSTEM_LIST, kListType},
    {ROLE_SYSTEM_LISTITEM, kListItemType},       {ROLE_SYSTEM_MENUITEM, kMenuItemType},
    {ROLE_SYSTEM_OUTLINEITEM, kTreeItemType},    {ROLE_SYSTEM_PAGETAB, kTabItemType},
    {ROLE_SYSTEM_PROGRESSBAR, kProgressBarType}, {ROLE_SYSTEM_RADIOBUTTON, kRadioButtonType},
    {ROLE_SYSTEM_SEPARATOR, kSeparatorType},     {ROLE_SYSTEM_SLIDER, kSliderType},
    {ROLE_SYSTEM_STATICTEXT, kTextType},         {ROLE_SYSTEM_TEXT, kEditType},
};

// What the program itself answers; the system's own answer, nothing, is that of most windows.
Accessible AccessibleOf(HWND window) {
  const LRESULT answer = Ask(window, WM_GETOBJECT, 0, OBJID_CLIENT).value_or(0);
  void* object = nullptr;
  if (answer <= 0 || FAILED(ObjectFromLresult(answer, kAccessible, 0, &object))) {
    return nullptr;
  }
  return Accessible(static_cast<IAccessible*>(object));
}

VARIANT Child(Part part) {
  VARIANT child{};
  child.vt = VT_I4;
  child.lVal = static_cast<LONG>(part);
  return child;
}

// Children that are objects of their own may be windows, which the tree has already.
bool IsPlainChild(IAccessible& accessible, Part part) {
  IDispatch* object = nullptr;
  const HRESULT result = accessible.get_accChild(Child(part), &object);
  if (object != nullptr) {
    object->Release();
  }
  return result == S_FALSE || (result == E_INVALIDARG && object == nullptr);
}

LONG NumberFrom(HRESULT result, const VARIANT& value) {
  return result == S_OK && value.vt == VT_I4 ? value.lVal : 0;
}

LONG StateOf(IAccessible& accessible, Part part) {
  VARIANT state{};
  const HRESULT result = accessible.get_accState(Child(part), &state);
  return NumberFrom(result, state);
}

CONTROLTYPEID TypeOf(IAccessible& accessible, Part part) {
  VARIANT value{};
  const HRESULT result = accessible.get_accRole(Child(part), &value);
  const LONG role = NumberFrom(result, value);
  for (const KnownRole& known : kKnownRoles) {
    if (known.role == role) {
      return known.type;
    }
  }
  return kCustomType;
}

PropertyValue TextFrom(HRESULT result, BSTR text) {
  PropertyValue value;
  if (result == S_OK && text != nullptr) {
    value = TextValue(uia::Text(text, SysStringLen(text)));
  }
  SysFreeString(text);
  return value;
}

class Pane final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kPaneType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    const Accessible accessible = AccessibleOf(control);
    return part == kControlItself || (accessible != nullptr && part <= CountOf(*accessible));
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    std::vector<Part> parts;
    const Accessible accessible = parent == kControlItself ? AccessibleOf(control) : nullptr;
    if (accessible == nullptr) {
      return parts;
    }
    for (const Part part : NumberedParts(CountOf(*accessible))) {
      if (IsPlainChild(*accessible, part) && (StateOf(*accessible, part) & STATE_SYSTEM_INVISIBLE) == 0) {
        parts.push_back(part);
      }
    }
    return parts;
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    for (const Part part : PartsOf(control, kControlItself)) {
      if (PartHolds(control, part, onScreen)) {
        return part;
      }
    }
    return kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    const Accessible accessible = AccessibleOf(control);
    if (accessible == nullptr) {
      return Answered(std::nullopt);
    }
    const CONTROLTYPEID type = TypeOf(*accessible, part);
    const LONG state = StateOf(*accessible, part);
    BSTR text = nullptr;
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(type);
      case UIA_NamePropertyId: {
        const HRESULT result = accessible->get_accName(Child(part), &text);
        return TextFrom(result, text);
      }
      case UIA_ValueValuePropertyId: {
        const HRESULT result = accessible->get_accValue(Child(part), &text);
        return TextFrom(result, text);
      }
      case kIsEnabled:
        return BoolValue((state & STATE_SYSTEM_UNAVAILABLE) == 0);
      case kToggleState:
        return type == kCheckBoxType ? NumberValue((state & STATE_SYSTEM_CHECKED) != 0 ? 1 : 0) : PropertyValue();
      case kIsSelected:
        return (state & STATE_SYSTEM_SELECTABLE) != 0 ? BoolValue((state & STATE_SYSTEM_SELECTED) != 0)
                                                      : PropertyValue();
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    const Accessible accessible = AccessibleOf(control);
    LONG left = 0;
    LONG top = 0;
    LONG width = 0;
    LONG height = 0;
    if (accessible == nullptr || accessible->accLocation(&left, &top, &width, &height, Child(part)) != S_OK) {
      return std::nullopt;
    }
    return RECT{left, top, left + width, top + height};
  }

 private:
  static Part CountOf(IAccessible& accessible) {
    LONG count = 0;
    return SUCCEEDED(accessible.get_accChildCount(&count)) && count > 0 ? static_cast<Part>(count) : 0;
  }
};

}  // namespace

const ControlClass& PaneClass() {
  static const Pane pane;
  return pane;
}

}  // namespace wine_automation
