#include "standin/hwnd/window_tree.h"

#include "standin/hwnd/control.h"

namespace standin::hwnd {
namespace {

using uia::Node;
using uia::PropertyValue;
using uia::Text;

constexpr HRESULT kNoClickablePoint = static_cast<HRESULT>(0x80040202);
constexpr HRESULT kTimeout = static_cast<HRESULT>(0x80131505);
constexpr int kNoRow = -1;

// A window's node is its handle, of which 32 bits count; a row's carries its 1-based number above them.
Node NodeOf(HWND window) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
}

Node NodeOf(HWND list, int row) {
  return (static_cast<Node>(row + 1) << 32) | NodeOf(list);
}

HWND HandleOf(Node node) {
  return reinterpret_cast<HWND>(static_cast<LONG_PTR>(static_cast<LONG>(node)));
}

int RowOf(Node node) {
  return static_cast<int>(node >> 32) - 1;
}

PropertyValue NumberValue(LONG number) {
  return {S_OK, VT_I4, number, {}, false};
}

PropertyValue TextValue(Text text) {
  return {S_OK, VT_BSTR, 0, std::move(text), false};
}

// What a window's program answered, or did not answer in time.
PropertyValue Answered(std::optional<Text> text) {
  if (!text) {
    return {kTimeout, VT_EMPTY, 0, {}, false};
  }
  return TextValue(std::move(*text));
}

PropertyValue NameOf(HWND window) {
  switch (ControlTypeOf(window)) {
    case kButtonType:
    case kGroupType:
    case kTextType:
      return Answered(TextOf(window));
    case kEditType:
    case kListType:
      return TextValue({});
    default:
      return TextValue(TitleOf(window));
  }
}

PropertyValue WindowProperty(HWND window, PROPERTYID property) {
  switch (property) {
    case UIA_ControlTypePropertyId:
      return NumberValue(ControlTypeOf(window));
    case UIA_NamePropertyId:
      return NameOf(window);
    case UIA_AutomationIdPropertyId:
      return TextValue(AutomationIdOf(window));
    case UIA_ClassNamePropertyId:
      return TextValue(ClassNameOf(window));
    case UIA_ValueValuePropertyId:
      return ControlTypeOf(window) == kEditType ? Answered(TextOf(window)) : PropertyValue();
    default:
      return {};
  }
}

PropertyValue RowProperty(HWND list, int row, PROPERTYID property) {
  switch (property) {
    case UIA_ControlTypePropertyId:
      return NumberValue(kListItemType);
    case UIA_NamePropertyId:
      return Answered(RowText(list, row));
    case UIA_AutomationIdPropertyId:
    case UIA_ClassNamePropertyId:
      return TextValue({});
    default:
      return {};
  }
}

bool IsVisibleAt(HWND window, POINT point) {
  RECT rect{};
  return IsWindowVisible(window) && GetWindowRect(window, &rect) && PtInRect(&rect, point);
}

// The child under the point, labels and disabled controls included, which the system's own search passes over. A group
// box gives way to the controls it frames.
HWND ChildAt(HWND window, POINT point) {
  HWND group = nullptr;
  for (const HWND child : ChildrenOf(window)) {
    if (!IsVisibleAt(child, point)) {
      continue;
    }
    if (ControlTypeOf(child) != kGroupType) {
      return child;
    }
    group = group == nullptr ? child : group;
  }
  return group;
}

Node RowAt(HWND list, POINT point) {
  const int rows = RowCount(list);
  for (int row = 0; row < rows; ++row) {
    const std::optional<RECT> rect = RowRect(list, row);
    if (rect && PtInRect(&*rect, point)) {
      return NodeOf(list, row);
    }
  }
  return NodeOf(list);
}

}  // namespace

Node WindowTree::Root() {
  return NodeOf(GetDesktopWindow());
}

bool WindowTree::Exists(Node node) {
  const HWND window = HandleOf(node);
  return IsWindow(window) && (RowOf(node) == kNoRow || RowOf(node) < RowCount(window));
}

Node WindowTree::Parent(Node node) {
  const HWND window = HandleOf(node);
  return NodeOf(RowOf(node) == kNoRow ? ParentOf(window) : window);
}

std::vector<Node> WindowTree::Children(Node node) {
  std::vector<Node> children;
  if (RowOf(node) != kNoRow) {
    return children;
  }
  const HWND window = HandleOf(node);
  for (const HWND child : ChildrenOf(window)) {
    children.push_back(NodeOf(child));
  }
  if (ControlTypeOf(window) == kListType) {
    const int rows = RowCount(window);
    for (int row = 0; row < rows; ++row) {
      children.push_back(NodeOf(window, row));
    }
  }
  return children;
}

Node WindowTree::At(POINT point) {
  const HWND hit = WindowFromPoint(point);
  const HWND root = hit == nullptr ? nullptr : GetAncestor(hit, GA_ROOT);
  if (root == nullptr || root == GetDesktopWindow()) {
    return Root();
  }
  HWND found = root;
  while (const HWND child = ChildAt(found, point)) {
    found = child;
  }
  return ControlTypeOf(found) == kListType ? RowAt(found, point) : NodeOf(found);
}

Node WindowTree::OfWindow(HWND window) {
  return IsWindow(window) ? NodeOf(window) : 0;
}

HWND WindowTree::WindowOf(Node node) {
  return RowOf(node) == kNoRow ? HandleOf(node) : nullptr;
}

PropertyValue WindowTree::Property(Node node, PROPERTYID property) {
  const HWND window = HandleOf(node);
  const int row = RowOf(node);
  return row == kNoRow ? WindowProperty(window, property) : RowProperty(window, row, property);
}

HRESULT WindowTree::Rectangle(Node node, RECT* rect) {
  const HWND window = HandleOf(node);
  if (RowOf(node) == kNoRow) {
    return GetWindowRect(window, rect) ? S_OK : uia::kElementNotAvailable;
  }
  const std::optional<RECT> row = RowRect(window, RowOf(node));
  if (!row) {
    return kTimeout;
  }
  *rect = *row;
  return S_OK;
}

HRESULT WindowTree::ClickablePoint(Node node, POINT* point, BOOL* gotClickable) {
  std::optional<RECT> visible = VisibleRect(HandleOf(node));
  if (visible && RowOf(node) != kNoRow) {
    const std::optional<RECT> row = RowRect(HandleOf(node), RowOf(node));
    if (!row || !IntersectRect(&*visible, &*visible, &*row)) {
      visible.reset();
    }
  }
  if (!visible) {
    return kNoClickablePoint;
  }
  *point = {visible->left + (visible->right - visible->left) / 2, visible->top + (visible->bottom - visible->top) / 2};
  *gotClickable = TRUE;
  return S_OK;
}

void WindowTree::Made(const void*, const char*) {
  ++objects_;
}

void WindowTree::Destroyed(const void*) {
  --objects_;
}

long WindowTree::Objects() const {
  return objects_;
}

}  // namespace standin::hwnd
