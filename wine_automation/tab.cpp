// Tab controls. A tab's page is a window beside the control or in it.
#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

class Tab final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kTabType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= Ask(control, TCM_GETITEMCOUNT).value_or(0);
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    return parent == kControlItself ? NumberedParts(Ask(control, TCM_GETITEMCOUNT)) : std::vector<Part>();
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    TCHITTESTINFO hit{};
    hit.pt = InClient(control, onScreen);
    const std::optional<LONG_PTR> tab = AskWith(control, TCM_HITTEST, 0, hit);
    return tab && *tab >= 0 ? static_cast<Part>(*tab) + 1 : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(kTabItemType);
      case UIA_NamePropertyId: {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        const std::optional<uia::Text> text = AskItemText(control, TCM_GETITEMW, part - 1, item);
        return Answered(text ? std::optional(WithoutMnemonic(*text)) : std::nullopt);
      }
      case kIsSelected:
        return BoolValue(Ask(control, TCM_GETCURSEL).value_or(-1) == static_cast<LONG_PTR>(part) - 1);
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    RECT rect{};
    const std::optional<LONG_PTR> answer = AskWith(control, TCM_GETITEMRECT, part - 1, rect);
    return answer && *answer != 0 ? std::optional(OnScreen(control, rect)) : std::nullopt;
  }
};

}  // namespace

const ControlClass& TabClass() {
  static const Tab tab;
  return tab;
}

}  // namespace wine_automation
