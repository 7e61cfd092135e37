// The desktop as a tree of user-interface elements.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

namespace {

using uia::kElementNotAvailable;
constexpr HRESULT kNoClickablePoint = static_cast<HRESULT>(0x80040202);

CONTROLTYPEID ControlTypeOf(const Node& node) {
  if (node.id == kRootElement) {
    return 50033;
  }
  if (!node.isWindow) {
    return node.element.controlType;
  }
  if (node.window.controlType != 0) {
    return node.window.controlType;
  }
  switch (node.window.behaviour) {
    case Behaviour::Label:
      return 50020;
    case Behaviour::Button:
      return 50000;
    case Behaviour::Edit:
      return 50004;
    case Behaviour::List:
      return 50008;
    case Behaviour::None:
    case Behaviour::Window:
      break;
  }
  return node.parent == kRootElement ? UIA_WindowControlTypeId : 50033;
}

Text AutomationIdOf(const Node& node) {
  if (!node.isWindow) {
    return node.element.automationId;
  }
  if (node.window.controlId == 0) {
    return {};
  }
  const std::string digits = std::to_string(node.window.controlId);
  return {digits.begin(), digits.end()};
}

uia::PropertyValue TextValue(Text text) {
  uia::PropertyValue value;
  value.type = VT_BSTR;
  value.text = std::move(text);
  return value;
}

uia::PropertyValue NumberValue(LONG number) {
  uia::PropertyValue value;
  value.type = VT_I4;
  value.number = number;
  return value;
}

uia::PropertyValue FailureValue(HRESULT result) {
  uia::PropertyValue value;
  value.result = result;
  return value;
}

uia::PropertyValue Overridden(const PropertyOverride& override) {
  switch (override.kind) {
    case PropertyOverride::Kind::String:
      return TextValue(override.text);
    case PropertyOverride::Kind::Failure:
      return FailureValue(override.result);
    case PropertyOverride::Kind::NullString: {
      uia::PropertyValue value = TextValue({});
      value.isNull = true;
      return value;
    }
    case PropertyOverride::Kind::Unsupported:
      break;
  }
  return {};
}

Text NameOf(const Node& node) {
  const bool titled = node.isWindow && node.window.behaviour != Behaviour::Edit;
  return titled ? node.window.title : node.element.name;
}

Text ClassNameOf(const Node& node) {
  return node.isWindow ? node.window.className : node.element.className;
}

// The part of the element that is not cut off by what it lies in; empty when it is not shown.
RECT VisiblePart(State& state, const Node& element) {
  RECT visible = element.rect;
  for (const Node* node = &element; node != nullptr && node->id != kRootElement; node = state.Find(node->parent)) {
    if (!node->visible || node->minimized) {
      return {};
    }
    visible = {std::max(visible.left, node->rect.left), std::max(visible.top, node->rect.top),
               std::min(visible.right, node->rect.right), std::min(visible.bottom, node->rect.bottom)};
  }
  return visible;
}

LONG Middle(LONG low, LONG high) {
  return static_cast<LONG>((LONGLONG{low} + high) / 2);
}

}  // namespace

uia::Node State::Root() {
  return kRootElement;
}

bool State::Exists(uia::Node node) {
  const std::lock_guard guard(mutex);
  return Find(node) != nullptr;
}

uia::Node State::Parent(uia::Node node) {
  const std::lock_guard guard(mutex);
  const Node* found = Find(node);
  return found == nullptr ? 0 : found->parent;
}

std::vector<uia::Node> State::Children(uia::Node node) {
  const std::lock_guard guard(mutex);
  const Node* found = Find(node);
  return found == nullptr ? std::vector<uia::Node>() : found->children;
}

uia::Node State::At(POINT point) {
  const std::lock_guard guard(mutex);
  return HitTest(kRootElement, point, false);
}

uia::Node State::OfWindow(HWND window) {
  const std::lock_guard guard(mutex);
  return FindWindow(window) != nullptr ? ElementFor(window) : 0;
}

HWND State::WindowOf(uia::Node node) {
  const std::lock_guard guard(mutex);
  return FindWindow(WindowFor(node)) != nullptr ? WindowFor(node) : nullptr;
}

uia::PropertyValue State::Property(uia::Node element, PROPERTYID property) {
  const std::lock_guard guard(mutex);
  const Node* node = Find(element);
  if (node == nullptr) {
    return FailureValue(kElementNotAvailable);
  }
  if (const auto override = node->overrides.find(property); override != node->overrides.end()) {
    return Overridden(override->second);
  }
  switch (property) {
    case uia::kHandedOutByArrays:
      return node->hiddenFromArrays ? FailureValue(E_FAIL) : uia::PropertyValue();
    case uia::kReadableFromCache:
      return node->hiddenFromCache ? FailureValue(E_FAIL) : uia::PropertyValue();
    case UIA_ControlTypePropertyId:
      return NumberValue(ControlTypeOf(*node));
    case UIA_NamePropertyId:
      return TextValue(NameOf(*node));
    case UIA_AutomationIdPropertyId:
      return TextValue(AutomationIdOf(*node));
    case UIA_ClassNamePropertyId:
      return TextValue(ClassNameOf(*node));
    case UIA_ValueValuePropertyId:
      return node->isWindow && node->window.behaviour == Behaviour::Edit ? TextValue(node->window.title)
                                                                         : uia::PropertyValue();
    default:
      return {};
  }
}

HRESULT State::Rectangle(uia::Node element, RECT* rect) {
  const std::lock_guard guard(mutex);
  const Node* node = Find(element);
  if (node == nullptr || node->elementRectFails) {
    return node == nullptr ? kElementNotAvailable : E_FAIL;
  }
  *rect = node->rect;
  return S_OK;
}

HRESULT State::ClickablePoint(uia::Node element, POINT* point, BOOL* gotClickable) {
  const std::lock_guard guard(mutex);
  const Node* node = Find(element);
  if (node == nullptr) {
    return kElementNotAvailable;
  }
  if (node->clickablePoint) {
    if (!*node->clickablePoint) {
      return kNoClickablePoint;
    }
    *point = **node->clickablePoint;
  } else {
    const RECT visible = VisiblePart(*this, *node);
    if (visible.left >= visible.right || visible.top >= visible.bottom) {
      return kNoClickablePoint;
    }
    *point = {Middle(visible.left, visible.right), Middle(visible.top, visible.bottom)};
  }
  *gotClickable = !node->clickableDenied;
  return S_OK;
}

// ---- Scripting ----

Element Elements::Add(Element parent, const ElementSpec& element) {
  const std::lock_guard guard(state_->mutex);
  Node* const above = state_->Find(parent);
  if (above == nullptr) {
    return 0;
  }
  Node node;
  node.id = state_->nextElement++;
  node.parent = parent;
  node.z = state_->nextZ++;
  node.rect = element.rect;
  node.element = element;
  above->children.push_back(node.id);
  return (state_->nodes[node.id] = std::move(node)).id;
}

Element Elements::Add(HWND parent, const ElementSpec& element) {
  return Add(ElementFor(parent), element);
}

void Elements::Destroy(Element element) {
  const std::lock_guard guard(state_->mutex);
  state_->Remove(element);
}

Element Elements::Of(HWND window) const {
  return ElementFor(window);
}

Element Elements::Root() const {
  return kRootElement;
}

RECT Elements::RectangleOf(Element element) const {
  const std::lock_guard guard(state_->mutex);
  const Node* node = state_->Find(element);
  return node == nullptr ? RECT{} : node->rect;
}

std::vector<Element> Elements::ChildrenOf(Element element) const {
  return state_->Children(element);
}

namespace {

// Runs `change` on an element that exists.
template <class Change>
void Alter(State& state, Element element, Change change) {
  const std::lock_guard guard(state.mutex);
  if (Node* node = state.Find(element)) {
    change(*node);
  }
}

void Override(State& state, Element element, PROPERTYID property, PropertyOverride answer) {
  Alter(state, element, [&](Node& node) { node.overrides.insert_or_assign(property, std::move(answer)); });
}

}  // namespace

void Elements::SetProperty(Element element, PROPERTYID property, TextView text) {
  Override(*state_, element, property, {PropertyOverride::Kind::String, Text(text)});
}

void Elements::SetNullString(Element element, PROPERTYID property) {
  Override(*state_, element, property, {PropertyOverride::Kind::NullString});
}

void Elements::SetUnsupported(Element element, PROPERTYID property) {
  Override(*state_, element, property, {PropertyOverride::Kind::Unsupported});
}

void Elements::FailProperty(Element element, PROPERTYID property, HRESULT result) {
  Override(*state_, element, property, {PropertyOverride::Kind::Failure, {}, result});
}

void Elements::SetClickablePoint(Element element, std::optional<POINT> point) {
  Alter(*state_, element, [point](Node& node) { node.clickablePoint = point; });
}

void Elements::DenyClickablePoint(Element element) {
  Alter(*state_, element, [](Node& node) { node.clickableDenied = true; });
}

void Elements::FailRectangle(Element element) {
  Alter(*state_, element, [](Node& node) { node.elementRectFails = true; });
}

void Elements::HideFromArrays(Element element) {
  Alter(*state_, element, [](Node& node) { node.hiddenFromArrays = true; });
}

void Elements::HideFromCache(Element element) {
  Alter(*state_, element, [](Node& node) { node.hiddenFromCache = true; });
}

}  // namespace standin
