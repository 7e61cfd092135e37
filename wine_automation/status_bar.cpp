// Status bars. One that shows a single text over its parts has none.
#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

std::optional<LONG_PTR> PartCount(HWND bar) {
  return Ask(bar, SB_ISSIMPLE).value_or(1) != 0 ? std::nullopt : Ask(bar, SB_GETPARTS);
}

std::optional<uia::Text> TextOfPart(HWND bar, Part part) {
  const std::optional<LONG_PTR> length = Ask(bar, SB_GETTEXTLENGTHW, part - 1);
  if (!length) {
    return std::nullopt;
  }
  uia::Text text(LOWORD(*length), L'\0');
  if (!Ask(bar, SB_GETTEXTW, part - 1, reinterpret_cast<LPARAM>(text.data()))) {
    return std::nullopt;
  }
  return text;
}

class StatusBar final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kStatusBarType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= PartCount(control).value_or(0);
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    return parent == kControlItself ? NumberedParts(PartCount(control)) : std::vector<Part>();
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
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(kTextType);
      case UIA_NamePropertyId:
        return Answered(TextOfPart(control, part));
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    RECT rect{};
    const std::optional<LONG_PTR> answer = AskWith(control, SB_GETRECT, part - 1, rect);
    return answer && *answer != 0 ? std::optional(OnScreen(control, rect)) : std::nullopt;
  }
};

}  // namespace

const ControlClass& StatusBarClass() {
  static const StatusBar statusBar;
  return statusBar;
}

}  // namespace wine_automation
