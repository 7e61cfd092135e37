// The column headers of list views, and headers that stand alone.
#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

class Header final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kHeaderType;
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= Ask(control, HDM_GETITEMCOUNT).value_or(0);
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    return parent == kControlItself ? NumberedParts(Ask(control, HDM_GETITEMCOUNT)) : std::vector<Part>();
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    HDHITTESTINFO hit{};
    hit.pt = InClient(control, onScreen);
    const std::optional<LONG_PTR> column = AskWith(control, HDM_HITTEST, 0, hit);
    return column && *column >= 0 && (hit.flags & (HHT_ONHEADER | HHT_ONDIVIDER)) != 0 ? static_cast<Part>(*column) + 1
                                                                                       : kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(kHeaderItemType);
      case UIA_NamePropertyId: {
        HDITEMW item{};
        item.mask = HDI_TEXT;
        return Answered(AskItemText(control, HDM_GETITEMW, part - 1, item));
      }
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    RECT rect{};
    const std::optional<LONG_PTR> answer = AskWith(control, HDM_GETITEMRECT, part - 1, rect);
    return answer && *answer != 0 ? std::optional(OnScreen(control, rect)) : std::nullopt;
  }
};

}  // namespace

const ControlClass& HeaderClass() {
  static const Header header;
  return header;
}

}  // namespace wine_automation
