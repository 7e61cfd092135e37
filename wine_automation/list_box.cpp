// List boxes, and the lists that combo boxes drop.
#include <algorithm>

#include "wine_automation/ask.h"
#include "wine_automation/combo_box.h"
#include "wine_automation/control.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

WPARAM RowOf(Part part) {
  return part - 1;
}

// The rows of a list that draws them itself may be pointers to data of its program.
bool HasTexts(HWND list) {
  const LONG_PTR style = GetWindowLongPtrW(list, GWL_STYLE);
  return (style & (LBS_OWNERDRAWFIXED | LBS_OWNERDRAWVARIABLE)) == 0 || (style & LBS_HASSTRINGS) != 0;
}

std::optional<uia::Text> RowText(HWND list, Part part) {
  if (!HasTexts(list)) {
    return uia::Text();
  }
  const std::optional<LONG_PTR> length = Ask(list, LB_GETTEXTLEN, RowOf(part));
  if (!length || *length < 0) {
    return std::nullopt;
  }
  // A row that grows in between would overrun the buffer: leave it room.
  uia::Text text(static_cast<std::size_t>(*length) + 256, L'\0');
  const std::optional<LONG_PTR> copied = Ask(list, LB_GETTEXT, RowOf(part), reinterpret_cast<LPARAM>(text.data()));
  if (!copied || *copied < 0) {
    return std::nullopt;
  }
  text.resize(std::min(text.size(), static_cast<std::size_t>(*copied)));
  return text;
}

struct ComboSearch {
  HWND list;
  HWND comboBox;
};

BOOL CALLBACK IsComboWanted(HWND window, LPARAM parameter) noexcept try {
  auto& search = *reinterpret_cast<ComboSearch*>(parameter);
  if (ClassNameOf(window) == L"ComboBox" && DroppedListOf(window) == search.list) {
    search.comboBox = window;
  }
  return search.comboBox == nullptr;
} catch (...) {
  return FALSE;
}

BOOL CALLBACK IsComboWantedBelow(HWND window, LPARAM parameter) noexcept {
  EnumChildWindows(window, IsComboWanted, parameter);
  return reinterpret_cast<const ComboSearch*>(parameter)->comboBox == nullptr;
}

// The system keeps nothing that leads from a list to its combo box, which is in the same thread.
HWND ComboOf(HWND list) {
  ComboSearch search{list, nullptr};
  EnumThreadWindows(GetCurrentThreadId(), IsComboWantedBelow, reinterpret_cast<LPARAM>(&search));
  return search.comboBox;
}

class ListBox : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND) const override {
    return kListType;
  }

  PropertyValue Name(HWND control) const override {
    return LabelBefore(control);
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return part <= Ask(control, LB_GETCOUNT).value_or(0);
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    return parent == kControlItself ? NumberedParts(Ask(control, LB_GETCOUNT)) : std::vector<Part>();
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    const POINT point = InClient(control, onScreen);
    const std::optional<LONG_PTR> nearest = Ask(control, LB_ITEMFROMPOINT, 0, MAKELPARAM(point.x, point.y));
    const LONG_PTR count = Ask(control, LB_GETCOUNT).value_or(0);
    if (!nearest) {
      return kControlItself;
    }
    // The answer has only the row's lower 16 bits.
    for (LONG_PTR row = LOWORD(*nearest); row < count; row += 0x10000) {
      const Part part = static_cast<Part>(row) + 1;
      if (PartHolds(control, part, onScreen)) {
        return part;
      }
    }
    return kControlItself;
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(kListItemType);
      case UIA_NamePropertyId:
        return Answered(RowText(control, part));
      case kIsSelected:
        return BoolValue(Ask(control, LB_GETSEL, RowOf(part)).value_or(0) > 0);
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    RECT rect{};
    const std::optional<LONG_PTR> answer = Ask(control, LB_GETITEMRECT, RowOf(part), reinterpret_cast<LPARAM>(&rect));
    return answer && *answer != LB_ERR ? std::optional(OnScreen(control, rect)) : std::nullopt;
  }
};

class DroppedList final : public ListBox {
 public:
  PropertyValue Name(HWND) const override {
    return TextValue({});
  }

  HWND WindowAbove(HWND control) const override {
    return IsTopLevel(control) ? ComboOf(control) : nullptr;
  }
};

}  // namespace

const ControlClass& DroppedListClass() {
  static const DroppedList list;
  return list;
}

const ControlClass& ListBoxClass() {
  static const ListBox listBox;
  return listBox;
}

}  // namespace wine_automation
