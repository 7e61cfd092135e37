// Tool bars. A button keeps its command's number from run to run, which makes it an AutomationId.
#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

std::optional<TBBUTTON> ButtonOf(HWND bar, Part part) {
  TBBUTTON button{};
  const std::optional<LONG_PTR> answer = AskWith(bar, TB_GETBUTTON, part - 1, button);
  return answer && *answer != 0 ? std::optional(button) : std::nullopt;
}

// Empty for a button that has a picture alone.
std::optional<uia::Text> TextOfButton(HWND bar, int command) {
  const auto id = static_cast<WPARAM>(command);
  const std::optional<LONG_PTR> length = Ask(bar, TB_GETBUTTONTEXTW, id);
  if (!length) {
    return std::nullopt;
  }
  if (*length <= 0) {
    return uia::Text();
  }
  uia::Text text(static_cast<std::size_t>(*length), L'\0');
  if (!Ask(bar, TB_GETBUTTONTEXTW, id, reinterpret_cast<LPARAM>(text.data()))) {
    return std::nullopt;
  }
  return text;
}

CONTROLTYPEID TypeOf(const TBBUTTON& button) {
  if ((button.fsStyle & BTNS_SEP) != 0) {
    return kSeparatorType;
  }
  return (button.fsStyle & BTNS_DROPDOWN) != 0 ? kSplitButtonType : kButtonType;
}

class ToolBar final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kToolBarType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= Ask(control, TB_BUTTONCOUNT).value_or(0);
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    std::vector<Part> parts;
    if (parent != kControlItself) {
      return parts;
    }
    for (const Part part : NumberedParts(Ask(control, TB_BUTTONCOUNT))) {
      const std::optional<TBBUTTON> button = ButtonOf(control, part);
      if (button && (button->fsState & TBSTATE_HIDDEN) == 0) {
        parts.push_back(part);
      }
    }
    return parts;
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    POINT point = InClient(control, onScreen);
    const std::optional<LONG_PTR> button = AskWith(control, TB_HITTEST, 0, point);
    if (!button || static_cast<int>(*button) < 0) {
      return kControlItself;
    }
    // Beside the last button some versions answer its number all the same.
    const Part part = static_cast<Part>(*button) + 1;
    return PartHolds(control, part, onScreen) ? part : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    const std::optional<TBBUTTON> button = ButtonOf(control, part);
    if (!button) {
      return Answered(std::nullopt);
    }
    const bool isSeparator = TypeOf(*button) == kSeparatorType;
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(TypeOf(*button));
      case UIA_AutomationIdPropertyId:
        return TextValue(isSeparator ? uia::Text() : L"Item " + std::to_wstring(button->idCommand));
      case UIA_NamePropertyId: {
        if (isSeparator) {
          return TextValue({});
        }
        const std::optional<uia::Text> text = TextOfButton(control, button->idCommand);
        return Answered(text ? std::optional(WithoutMnemonic(*text)) : std::nullopt);
      }
      case kIsEnabled:
        return isSeparator ? PropertyValue() : BoolValue((button->fsState & TBSTATE_ENABLED) != 0);
      case kToggleState:
        return (button->fsStyle & BTNS_CHECK) != 0 ? NumberValue((button->fsState & TBSTATE_CHECKED) != 0 ? 1 : 0)
                                                   : PropertyValue();
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    RECT rect{};
    const std::optional<LONG_PTR> answer = AskWith(control, TB_GETITEMRECT, part - 1, rect);
    return answer && *answer != 0 ? std::optional(OnScreen(control, rect)) : std::nullopt;
  }
};

}  // namespace

const ControlClass& ToolBarClass() {
  static const ToolBar toolBar;
  return toolBar;
}

}  // namespace wine_automation
