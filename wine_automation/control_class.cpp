#include "wine_automation/control_class.h"

#include <algorithm>
#include <numeric>

#include "wine_automation/control.h"

namespace wine_automation {
namespace {

using uia::PropertyValue;

constexpr HRESULT kTimeout = static_cast<HRESULT>(0x80131505);

struct Known {
  const WCHAR* className;
  const ControlClass& (*controlClass)();
};

const Known kKnown[] = {
    {L"Button", ButtonClass},
    {L"ComboBox", ComboBoxClass},
    {L"ComboBoxEx32", ComboBoxClass},
    {L"Edit", EditClass},
    {L"ListBox", ListBoxClass},
    {L"ComboLBox", DroppedListClass},
    {L"RichEdit", RichEditClass},
    {L"RichEdit20A", RichEditClass},
    {L"RichEdit20W", RichEditClass},
    {L"RichEdit50W", RichEditClass},
    {L"ScrollBar", ScrollBarClass},
    {L"Static", StaticClass},
    {L"SysHeader32", HeaderClass},
    {L"SysListView32", ListViewClass},
    {L"SysTabControl32", TabClass},
    {L"SysTreeView32", TreeViewClass},
    {L"ToolbarWindow32", ToolBarClass},
    {L"msctls_progress32", ProgressBarClass},
    {L"msctls_statusbar32", StatusBarClass},
    {L"msctls_trackbar32", SliderClass},
    {L"msctls_updown32", UpDownClass},
};

}  // namespace

const ControlClass& ControlClassOf(HWND window) {
  const uia::Text className = ClassNameOf(window);
  if (className == L"#32768") {
    return PopupMenuClass();
  }
  if (IsTopLevel(window) && className != L"ComboLBox") {
    return WindowClass();
  }
  for (const Known& known : kKnown) {
    if (CompareStringOrdinal(className.c_str(), -1, known.className, -1, TRUE) == CSTR_EQUAL) {
      return known.controlClass();
    }
  }
  return PaneClass();
}

PropertyValue ControlClass::Name(HWND control) const {
  return TextValue(TitleOf(control));
}

PropertyValue ControlClass::State(HWND, PROPERTYID) const {
  return {};
}

bool ControlClass::MayHaveParts(HWND) const {
  return false;
}

bool ControlClass::HasPart(HWND, Part) const {
  return false;
}

Part ControlClass::ParentOf(HWND, Part) const {
  return kControlItself;
}

std::vector<Part> ControlClass::PartsOf(HWND, Part) const {
  return {};
}

Part ControlClass::PartAt(HWND, POINT) const {
  return kControlItself;
}

PropertyValue ControlClass::PartProperty(HWND, Part, PROPERTYID) const {
  return {};
}

std::optional<RECT> ControlClass::PartRect(HWND, Part) const {
  return std::nullopt;
}

HWND ControlClass::WindowBelow(HWND) const {
  return nullptr;
}

HWND ControlClass::WindowAbove(HWND) const {
  return nullptr;
}

std::optional<RECT> ControlClass::PartClickRect(HWND control, Part part) const {
  return PartRect(control, part);
}

PropertyValue NumberValue(LONG number) {
  return {S_OK, VT_I4, number, {}, false};
}

PropertyValue RangeValue(std::optional<LONG_PTR> number) {
  if (!number) {
    return {kTimeout, VT_EMPTY, 0, {}, false};
  }
  return {S_OK, VT_R8, static_cast<LONG>(*number), {}, false};
}

PropertyValue BoolValue(bool value) {
  return {S_OK, VT_BOOL, value ? VARIANT_TRUE : VARIANT_FALSE, {}, false};
}

PropertyValue TextValue(uia::Text text) {
  return {S_OK, VT_BSTR, 0, std::move(text), false};
}

PropertyValue Answered(std::optional<uia::Text> text) {
  if (!text) {
    return {kTimeout, VT_EMPTY, 0, {}, false};
  }
  return TextValue(std::move(*text));
}

uia::Text WithoutMnemonic(const uia::Text& text) {
  uia::Text shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'&' && i + 1 < text.size()) {
      ++i;
    }
    shown += text[i];
  }
  return shown;
}

PropertyValue LabelBefore(HWND control) {
  const HWND before = GetWindow(control, GW_HWNDPREV);
  if (before == nullptr || ControlTypeOf(before) != kTextType) {
    return TextValue({});
  }
  return NameOf(before);
}

RECT OnScreen(HWND control, RECT rect) {
  MapWindowPoints(control, nullptr, reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

POINT InClient(HWND control, POINT onScreen) {
  MapWindowPoints(nullptr, control, &onScreen, 1);
  return onScreen;
}

bool ControlClass::PartHolds(HWND control, Part part, POINT onScreen) const {
  const std::optional<RECT> rect = PartRect(control, part);
  return rect && PtInRect(&*rect, onScreen);
}

std::vector<Part> NumberedParts(std::optional<LONG_PTR> count) {
  std::vector<Part> parts(static_cast<std::size_t>(std::max<LONG_PTR>(0, count.value_or(0))));
  std::iota(parts.begin(), parts.end(), Part{1});
  return parts;
}

}  // namespace wine_automation
