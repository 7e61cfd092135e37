// Controls that are one window without parts.
#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

LONG_PTR StyleOf(HWND window) {
  return GetWindowLongPtrW(window, GWL_STYLE);
}

PropertyValue ShownText(HWND control) {
  std::optional<uia::Text> text = TextOf(control);
  return Answered(text ? std::optional(WithoutMnemonic(*text)) : std::nullopt);
}

class Button final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND control) const override {
    switch (StyleOf(control) & BS_TYPEMASK) {
      case BS_GROUPBOX:
        return kGroupType;
      case BS_CHECKBOX:
      case BS_AUTOCHECKBOX:
      case BS_3STATE:
      case BS_AUTO3STATE:
        return kCheckBoxType;
      case BS_RADIOBUTTON:
      case BS_AUTORADIOBUTTON:
        return kRadioButtonType;
      case BS_SPLITBUTTON:
      case BS_DEFSPLITBUTTON:
        return kSplitButtonType;
      default:
        return kButtonType;
    }
  }

  PropertyValue Name(HWND control) const override {
    return ShownText(control);
  }

  PropertyValue State(HWND control, PROPERTYID property) const override {
    const CONTROLTYPEID type = Type(control);
    const bool toggles = property == kToggleState && type == kCheckBoxType;
    const bool selects = property == kIsSelected && type == kRadioButtonType;
    if (!toggles && !selects) {
      return {};
    }
    const std::optional<LONG_PTR> checked = Ask(control, BM_GETCHECK);
    if (!checked) {
      return Answered(std::nullopt);
    }
    return toggles ? NumberValue(static_cast<LONG>(*checked)) : BoolValue(*checked == BST_CHECKED);
  }
};

class Static final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND control) const override {
    switch (StyleOf(control) & SS_TYPEMASK) {
      case SS_ICON:
      case SS_BITMAP:
      case SS_ENHMETAFILE:
        return kImageType;
      default:
        return kTextType;
    }
  }

  PropertyValue Name(HWND control) const override {
    if (Type(control) == kImageType) {
      return TextValue({});
    }
    return (StyleOf(control) & SS_NOPREFIX) != 0 ? Answered(TextOf(control)) : ShownText(control);
  }
};

// A control named by its label, whose value is the text it shows.
class TextField final : public ControlClass {
 public:
  TextField(CONTROLTYPEID type, CONTROLTYPEID typeOfManyLines) : type_(type), typeOfManyLines_(typeOfManyLines) {}

  CONTROLTYPEID Type(HWND control) const override {
    return (StyleOf(control) & ES_MULTILINE) != 0 ? typeOfManyLines_ : type_;
  }

  PropertyValue Name(HWND control) const override {
    return LabelBefore(control);
  }

  PropertyValue State(HWND control, PROPERTYID property) const override {
    return property == UIA_ValueValuePropertyId ? Answered(TextOf(control)) : PropertyValue();
  }

 private:
  const CONTROLTYPEID type_;
  const CONTROLTYPEID typeOfManyLines_;
};

// A control named by its label, whose value is a number.
class Range final : public ControlClass {
 public:
  Range(CONTROLTYPEID type, UINT ask) : type_(type), ask_(ask) {}

  CONTROLTYPEID Type(HWND) const override {
    return type_;
  }

  PropertyValue Name(HWND control) const override {
    return LabelBefore(control);
  }

  PropertyValue State(HWND control, PROPERTYID property) const override {
    return property == kRangeValue ? RangeValue(Ask(control, ask_)) : PropertyValue();
  }

 private:
  const CONTROLTYPEID type_;
  const UINT ask_;
};

}  // namespace

const ControlClass& ButtonClass() {
  static const Button button;
  return button;
}

const ControlClass& StaticClass() {
  static const Static label;
  return label;
}

const ControlClass& EditClass() {
  static const TextField edit(kEditType, kEditType);
  return edit;
}

const ControlClass& RichEditClass() {
  static const TextField richEdit(kEditType, kDocumentType);
  return richEdit;
}

const ControlClass& SliderClass() {
  static const Range slider(kSliderType, TBM_GETPOS);
  return slider;
}

const ControlClass& ProgressBarClass() {
  static const Range progressBar(kProgressBarType, PBM_GETPOS);
  return progressBar;
}

const ControlClass& ScrollBarClass() {
  static const Range scrollBar(kScrollBarType, SBM_GETPOS);
  return scrollBar;
}

const ControlClass& UpDownClass() {
  static const Range upDown(kSpinnerType, UDM_GETPOS32);
  return upDown;
}

}  // namespace wine_automation
