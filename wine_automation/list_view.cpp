// List views: rows, and in the view with columns the cells of each row. A part's number is that of its row, from 1,
// with that of the cell, from 1, in its lowest bits.
#include <algorithm>

#include "wine_automation/ask.h"
#include "wine_automation/common_controls.h"
#include "wine_automation/control_class.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

constexpr unsigned kCellBits = 6;
constexpr Part kCellMask = (Part{1} << kCellBits) - 1;
constexpr LONG_PTR kMostRows = LONG_PTR{1} << (31 - kCellBits);

constexpr Part PartOf(LONG_PTR row, LONG_PTR cell = 0) {
  return (static_cast<Part>(row + 1) << kCellBits) | static_cast<Part>(cell);
}

int RowOf(Part part) {
  return static_cast<int>(part >> kCellBits) - 1;
}

// From 1; 0 for the row itself.
int CellOf(Part part) {
  return static_cast<int>(part & kCellMask);
}

bool HasColumns(HWND list) {
  return (GetWindowLongPtrW(list, GWL_STYLE) & LVS_TYPEMASK) == LVS_REPORT;
}

HWND HeaderOf(HWND list) {
  return reinterpret_cast<HWND>(Ask(list, LVM_GETHEADER).value_or(0));
}

LONG_PTR CellCount(HWND list) {
  if (!HasColumns(list)) {
    return 0;
  }
  const HWND header = HeaderOf(list);
  const LONG_PTR count = header == nullptr ? 0 : Ask(header, HDM_GETITEMCOUNT).value_or(0);
  return std::clamp<LONG_PTR>(count, 0, kCellMask);
}

LONG_PTR RowCount(HWND list) {
  return std::clamp<LONG_PTR>(Ask(list, LVM_GETITEMCOUNT).value_or(0), 0, kMostRows);
}

std::optional<uia::Text> TextAt(HWND list, Part part) {
  LVITEMW item{};
  item.iSubItem = std::max(0, CellOf(part) - 1);
  return AskItemText(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(RowOf(part)), item);
}

std::optional<RECT> RectOf(HWND list, Part part, LONG which) {
  RECT rect{};
  rect.left = which;
  UINT message = LVM_GETITEMRECT;
  if (CellOf(part) > 1) {
    rect.top = CellOf(part) - 1;
    message = LVM_GETSUBITEMRECT;
  }
  const std::optional<LONG_PTR> answer = AskWith(list, message, static_cast<WPARAM>(RowOf(part)), rect);
  return answer && *answer != 0 ? std::optional(OnScreen(list, rect)) : std::nullopt;
}

// Rows that were scrolled up lie under the column headers.
std::optional<RECT> BelowHeader(HWND list, std::optional<RECT> rect) {
  RECT header{};
  const HWND headerWindow = rect && HasColumns(list) ? HeaderOf(list) : nullptr;
  if (headerWindow != nullptr && IsWindowVisible(headerWindow) && GetWindowRect(headerWindow, &header)) {
    rect->top = std::max(rect->top, header.bottom);
    if (rect->top >= rect->bottom) {
      return std::nullopt;
    }
  }
  return rect;
}

class ListView final : public ControlClass {
 public:
  CONTROLTYPEID Type(HWND control) const override {
    return HasColumns(control) ? kDataGridType : kListType;
  }

  PropertyValue Name(HWND control) const override {
    return LabelBefore(control);
  }

  bool MayHaveParts(HWND) const override {
    return true;
  }

  bool HasPart(HWND control, Part part) const override {
    return RowOf(part) < RowCount(control) && (CellOf(part) == 0 || CellOf(part) <= CellCount(control));
  }

  Part ParentOf(HWND, Part part) const override {
    return CellOf(part) == 0 ? kControlItself : PartOf(RowOf(part));
  }

  std::vector<Part> PartsOf(HWND control, Part parent) const override {
    std::vector<Part> parts;
    if (parent == kControlItself) {
      const LONG_PTR rows = RowCount(control);
      for (LONG_PTR row = 0; row < rows; ++row) {
        parts.push_back(PartOf(row));
      }
    } else if (CellOf(parent) == 0) {
      const LONG_PTR cells = CellCount(control);
      for (LONG_PTR cell = 1; cell <= cells; ++cell) {
        parts.push_back(PartOf(RowOf(parent), cell));
      }
    }
    return parts;
  }

  Part PartAt(HWND control, POINT onScreen) const override {
    LVHITTESTINFO hit{};
    hit.pt = InClient(control, onScreen);
    const std::optional<LONG_PTR> row = AskWith(control, LVM_SUBITEMHITTEST, 0, hit);
    if (!row || *row < 0) {
      return kControlItself;
    }
    return PartOf(*row, hit.iSubItem < CellCount(control) ? hit.iSubItem + 1 : 0);
  }

  PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const override {
    const bool isCell = CellOf(part) != 0;
    switch (property) {
      case UIA_ControlTypePropertyId:
        return NumberValue(isCell ? kTextType : HasColumns(control) ? kDataItemType : kListItemType);
      case UIA_NamePropertyId:
        return Answered(TextAt(control, part));
      case kIsSelected:
        return isCell
                   ? PropertyValue()
                   : BoolValue(
                         Ask(control, LVM_GETITEMSTATE, static_cast<WPARAM>(RowOf(part)), LVIS_SELECTED).value_or(0) !=
                         0);
      default:
        return {};
    }
  }

  std::optional<RECT> PartRect(HWND control, Part part) const override {
    return RectOf(control, part, CellOf(part) == 1 ? LVIR_LABEL : LVIR_BOUNDS);
  }

  // A row is taken by its first cell: elsewhere a click selects it in some lists only.
  std::optional<RECT> PartClickRect(HWND control, Part part) const override {
    return BelowHeader(control, RectOf(control, part, CellOf(part) <= 1 ? LVIR_LABEL : LVIR_BOUNDS));
  }
};

}  // namespace

const ControlClass& ListViewClass() {
  static const ListView listView;
  return listView;
}

}  // namespace wine_automation
