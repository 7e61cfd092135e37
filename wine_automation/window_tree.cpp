#include "wine_automation/window_tree.h"

#include "wine_automation/control.h"
#include "wine_automation/control_class.h"
#include "wine_automation/locked.h"
#include "wine_automation/parts.h"
#include "wine_automation/visit.h"

namespace wine_automation {
namespace {

using uia::Node;
using uia::PropertyValue;

constexpr HRESULT kNoClickablePoint = static_cast<HRESULT>(0x80040202);

// A window's node is its handle, of which 32 bits count; a part's carries its number above them.
Node NodeOf(HWND window, Part part = kControlItself) {
  return (static_cast<Node>(part) << 32) | static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
}

HWND HandleOf(Node node) {
  return reinterpret_cast<HWND>(static_cast<LONG_PTR>(static_cast<LONG>(node)));
}

Part PartOf(Node node) {
  return static_cast<Part>(node >> 32);
}

bool MayHaveParts(HWND window) {
  return ControlClassOf(window).MayHaveParts(window);
}

bool IsDroppedList(HWND window) {
  return IsTopLevel(window) && ClassNameOf(window) == L"ComboLBox";
}

// A window lies below the one that owns it, if that shows; the list of a combo box, which nothing owns, below its combo
// box.
HWND AboveInTree(HWND window) {
  const HWND above = IsDroppedList(window) ? WindowAbove(window) : GetWindow(window, GW_OWNER);
  return above != nullptr && IsWindowVisible(above) ? above : ParentOf(window);
}

// In front of its other children.
void AddOwnedWindows(HWND window, std::vector<Node>& children) {
  for (const HWND other : ChildrenOf(GetDesktopWindow())) {
    if (GetWindow(other, GW_OWNER) == window) {
      children.push_back(NodeOf(other));
    }
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
    case kIsEnabled:
      return BoolValue(IsWindowEnabled(window));
    default:
      return ControlClassOf(window).State(window, property);
  }
}

LONGLONG AreaOf(HWND window) {
  RECT rect{};
  GetWindowRect(window, &rect);
  return static_cast<LONGLONG>(rect.right - rect.left) * (rect.bottom - rect.top);
}

// The child under the point, disabled controls included, which the system's own search passes over. Group boxes, labels
// and pictures give way to what lies in the same place; of several the smallest is meant.
HWND ChildAt(HWND window, const std::vector<HWND>& underPoint) {
  HWND background = nullptr;
  for (const HWND child : underPoint) {
    if (ParentOf(child) != window || !IsWindowVisible(child)) {
      continue;
    }
    const CONTROLTYPEID type = ControlTypeOf(child);
    if (type != kGroupType && type != kTextType && type != kImageType) {
      return child;
    }
    if (background == nullptr || AreaOf(child) < AreaOf(background)) {
      background = child;
    }
  }
  return background;
}

}  // namespace

Node WindowTree::Root() {
  return NodeOf(GetDesktopWindow());
}

bool WindowTree::Exists(Node node) {
  const HWND window = HandleOf(node);
  return IsWindow(window) && (PartOf(node) == kControlItself || HasPart(window, PartOf(node)));
}

Node WindowTree::Parent(Node node) {
  const HWND window = HandleOf(node);
  return PartOf(node) == kControlItself ? NodeOf(AboveInTree(window))
                                        : NodeOf(window, ParentOfPart(window, PartOf(node)));
}

std::vector<Node> WindowTree::Children(Node node) {
  std::vector<Node> children;
  const HWND window = HandleOf(node);
  if (PartOf(node) == kControlItself) {
    if (ControlTypeOf(window) == kComboBoxType) {
      if (const HWND list = WindowBelow(window)) {
        children.push_back(NodeOf(list));
      }
    }
    const bool isDesktop = window == GetDesktopWindow();
    if (!isDesktop && IsTopLevel(window)) {
      AddOwnedWindows(window, children);
    }
    for (const HWND child : ChildrenOf(window)) {
      if (!isDesktop || AboveInTree(child) == window) {
        children.push_back(NodeOf(child));
      }
    }
  }
  if (const auto parts = MayHaveParts(window) ? PartsOf(window, PartOf(node)) : std::nullopt) {
    const Locked locked(lock_);
    for (const PartFacts& facts : *parts) {
      const Node part = NodeOf(window, facts.part);
      facts_[part] = {GetCurrentThreadId(), facts.type, facts.automationId};
      children.push_back(part);
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
  const std::vector<HWND> underPoint = DescendantsAt(root, point);
  while (const HWND child = ChildAt(found, underPoint)) {
    found = child;
  }
  return NodeOf(found, MayHaveParts(found) ? PartAt(found, point) : kControlItself);
}

Node WindowTree::OfWindow(HWND window) {
  return IsWindow(window) ? NodeOf(window) : 0;
}

HWND WindowTree::WindowOf(Node node) {
  return PartOf(node) == kControlItself ? HandleOf(node) : nullptr;
}

PropertyValue WindowTree::Property(Node node, PROPERTYID property) {
  // Questions of the client objects themselves, which nothing here answers otherwise than by default.
  if (property == uia::kHandedOutByArrays || property == uia::kReadableFromCache ||
      property == uia::kNativeWindowHandle) {
    return {};
  }
  const HWND window = HandleOf(node);
  if (PartOf(node) == kControlItself) {
    return WindowProperty(window, property);
  }
  if (property == UIA_ClassNamePropertyId) {
    return TextValue({});
  }
  if (std::optional<PropertyValue> remembered = Remembered(node, property)) {
    return *std::move(remembered);
  }
  const PropertyValue value = PropertyOfPart(window, PartOf(node), property);
  if (property == kIsEnabled && value.type == VT_EMPTY) {
    return BoolValue(IsWindowEnabled(window));
  }
  const bool hasNoId = property == UIA_AutomationIdPropertyId && SUCCEEDED(value.result) && value.type == VT_EMPTY;
  return hasNoId ? TextValue({}) : value;
}

std::optional<PropertyValue> WindowTree::Remembered(Node node, PROPERTYID property) {
  if (property != UIA_ControlTypePropertyId && property != UIA_AutomationIdPropertyId) {
    return std::nullopt;
  }
  const Locked locked(lock_);
  const auto found = facts_.find(node);
  if (found == facts_.end()) {
    return std::nullopt;
  }
  return property == UIA_ControlTypePropertyId ? NumberValue(found->second.type)
                                               : TextValue(found->second.automationId);
}

void WindowTree::Leave() {
  const Locked locked(lock_);
  if (!facts_.empty()) {
    std::erase_if(facts_, [](const auto& entry) { return entry.second.thread == GetCurrentThreadId(); });
  }
}

HRESULT WindowTree::Rectangle(Node node, RECT* rect) {
  const HWND window = HandleOf(node);
  if (PartOf(node) == kControlItself) {
    return GetWindowRect(window, rect) ? S_OK : uia::kElementNotAvailable;
  }
  const std::optional<RECT> part = RectOfPart(window, PartOf(node));
  // A part that is folded away or scrolled out has none.
  *rect = part.value_or(RECT{});
  return S_OK;
}

HRESULT WindowTree::ClickablePoint(Node node, POINT* point, BOOL* gotClickable) {
  const HWND window = HandleOf(node);
  std::optional<RECT> visible = VisibleRect(window);
  if (visible && PartOf(node) == kControlItself && !IsTopLevel(window) && MayHaveParts(window) && !CanBeAsked(window)) {
    // What lies in its middle is not known.
    visible.reset();
  }
  if (visible && PartOf(node) != kControlItself) {
    const std::optional<RECT> part = ClickRectOfPart(window, PartOf(node));
    if (!part || !IntersectRect(&*visible, &*visible, &*part)) {
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
  if (--objects_ == 0) {
    FreeVisits();
  }
}

long WindowTree::Objects() const {
  return objects_;
}

}  // namespace wine_automation
