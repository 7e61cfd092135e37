// What a class of windows is to UI Automation: its control type, its name and value, and its parts: the items that have
// no window of their own.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "standin/uia/tree.h"

namespace wine_automation {

namespace uia = standin::uia;

inline constexpr CONTROLTYPEID kButtonType = 50000;
inline constexpr CONTROLTYPEID kCheckBoxType = 50002;
inline constexpr CONTROLTYPEID kComboBoxType = 50003;
inline constexpr CONTROLTYPEID kEditType = 50004;
inline constexpr CONTROLTYPEID kImageType = 50006;
inline constexpr CONTROLTYPEID kListItemType = 50007;
inline constexpr CONTROLTYPEID kListType = 50008;
inline constexpr CONTROLTYPEID kMenuType = 50009;
inline constexpr CONTROLTYPEID kMenuBarType = 50010;
inline constexpr CONTROLTYPEID kMenuItemType = 50011;
inline constexpr CONTROLTYPEID kProgressBarType = 50012;
inline constexpr CONTROLTYPEID kRadioButtonType = 50013;
inline constexpr CONTROLTYPEID kScrollBarType = 50014;
inline constexpr CONTROLTYPEID kSliderType = 50015;
inline constexpr CONTROLTYPEID kSpinnerType = 50016;
inline constexpr CONTROLTYPEID kStatusBarType = 50017;
inline constexpr CONTROLTYPEID kTabType = 50018;
inline constexpr CONTROLTYPEID kTabItemType = 50019;
inline constexpr CONTROLTYPEID kTextType = 50020;
inline constexpr CONTROLTYPEID kToolBarType = 50021;
inline constexpr CONTROLTYPEID kTreeType = 50023;
inline constexpr CONTROLTYPEID kTreeItemType = 50024;
inline constexpr CONTROLTYPEID kCustomType = 50025;
inline constexpr CONTROLTYPEID kGroupType = 50026;
inline constexpr CONTROLTYPEID kDataGridType = 50028;
inline constexpr CONTROLTYPEID kDataItemType = 50029;
inline constexpr CONTROLTYPEID kDocumentType = 50030;
inline constexpr CONTROLTYPEID kSplitButtonType = 50031;
inline constexpr CONTROLTYPEID kPaneType = 50033;
inline constexpr CONTROLTYPEID kHeaderType = 50034;
inline constexpr CONTROLTYPEID kHeaderItemType = 50035;
inline constexpr CONTROLTYPEID kTitleBarType = 50037;
inline constexpr CONTROLTYPEID kSeparatorType = 50038;

inline constexpr PROPERTYID kIsEnabled = 30010;
inline constexpr PROPERTYID kRangeValue = 30047;
inline constexpr PROPERTYID kExpandCollapseState = 30070;
inline constexpr PROPERTYID kIsSelected = 30079;
inline constexpr PROPERTYID kToggleState = 30086;

// Names a part for as long as it exists; 0 is the control itself.
using Part = std::uint32_t;
inline constexpr Part kControlItself = 0;

class ControlClass {
 public:
  virtual ~ControlClass() = default;

  virtual CONTROLTYPEID Type(HWND control) const = 0;
  // The title that the system keeps, unless the class knows better.
  virtual uia::PropertyValue Name(HWND control) const;
  // Any other property than type, name, AutomationId and class name.
  virtual uia::PropertyValue State(HWND control, PROPERTYID property) const;

  // Whether the members below know more than that there are no parts. They are called in the control's own thread.
  virtual bool MayHaveParts(HWND control) const;
  virtual bool HasPart(HWND control, Part part) const;
  virtual Part ParentOf(HWND control, Part part) const;
  virtual std::vector<Part> PartsOf(HWND control, Part parent) const;
  // The control itself where there is no part.
  virtual Part PartAt(HWND control, POINT onScreen) const;
  virtual uia::PropertyValue PartProperty(HWND control, Part part, PROPERTYID property) const;
  // In screen pixels.
  virtual std::optional<RECT> PartRect(HWND control, Part part) const;
  // For the list that a combo box drops, which the system keeps as a window of the desktop: the list, while it shows,
  // and the combo box. Null for others. Called in the control's own thread.
  virtual HWND WindowBelow(HWND control) const;
  virtual HWND WindowAbove(HWND control) const;
  // Where a click acts on the part.
  virtual std::optional<RECT> PartClickRect(HWND control, Part part) const;

 protected:
  bool PartHolds(HWND control, Part part, POINT onScreen) const;
};

// The class of a window. A child window that nobody knows is a pane.
const ControlClass& ControlClassOf(HWND window);

const ControlClass& ComboBoxClass();
const ControlClass& DroppedListClass();
const ControlClass& HeaderClass();
const ControlClass& ListBoxClass();
const ControlClass& ListViewClass();
const ControlClass& PaneClass();
const ControlClass& PopupMenuClass();
const ControlClass& StatusBarClass();
const ControlClass& TabClass();
const ControlClass& ToolBarClass();
const ControlClass& TreeViewClass();
const ControlClass& WindowClass();
// Buttons, edits and others without parts.
const ControlClass& ButtonClass();
const ControlClass& EditClass();
const ControlClass& ProgressBarClass();
const ControlClass& RichEditClass();
const ControlClass& ScrollBarClass();
const ControlClass& SliderClass();
const ControlClass& StaticClass();
const ControlClass& UpDownClass();

// ---- What several classes need ----

uia::PropertyValue NumberValue(LONG number);
uia::PropertyValue RangeValue(std::optional<LONG_PTR> number);
uia::PropertyValue BoolValue(bool value);
uia::PropertyValue TextValue(uia::Text text);
// What a window's program answered, or did not answer in time.
uia::PropertyValue Answered(std::optional<uia::Text> text);
// "&File" is shown as "File", "R&&D" as "R&D".
uia::Text WithoutMnemonic(const uia::Text& text);
// The text of the label that stands before a control.
uia::PropertyValue LabelBefore(HWND control);
RECT OnScreen(HWND control, RECT rect);
POINT InClient(HWND control, POINT onScreen);
// For parts numbered from 1.
std::vector<Part> NumberedParts(std::optional<LONG_PTR> count);

}  // namespace wine_automation
