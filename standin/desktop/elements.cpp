// The desktop as a tree of user-interface elements.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr HRESULT kElementNotAvailable = static_cast<HRESULT>(0x80040201);

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
  if (node.id == kRootElement) {
    return u"#32769";
  }
  return node.isWindow ? node.window.className : node.element.className;
}

}  // namespace

uia::Node Desktop::State::Root() {
  return kRootElement;
}

bool Desktop::State::Exists(uia::Node node) {
  const std::lock_guard guard(mutex);
  return Find(node) != nullptr;
}

uia::Node Desktop::State::Parent(uia::Node node) {
  const std::lock_guard guard(mutex);
  const Node* found = Find(node);
  return found == nullptr ? 0 : found->parent;
}

std::vector<uia::Node> Desktop::State::Children(uia::Node node) {
  const std::lock_guard guard(mutex);
  const Node* found = Find(node);
  return found == nullptr ? std::vector<uia::Node>() : found->children;
}

uia::Node Desktop::State::At(POINT point) {
  const std::lock_guard guard(mutex);
  return HitTest(kRootElement, point, false);
}

uia::Node Desktop::State::OfWindow(HWND window) {
  const std::lock_guard guard(mutex);
  return FindWindow(window) != nullptr || ElementFor(window) == kRootElement ? ElementFor(window) : 0;
}

HWND Desktop::State::WindowOf(uia::Node node) {
  const std::lock_guard guard(mutex);
  const Node* found = Find(node);
  return found != nullptr && (found->isWindow || node == kRootElement) ? WindowFor(node) : nullptr;
}

uia::PropertyValue Desktop::State::Property(uia::Node element, PROPERTYID property) {
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

HRESULT Desktop::State::Rectangle(uia::Node element, RECT* rect) {
  const std::lock_guard guard(mutex);
  const Node* node = Find(element);
  if (node == nullptr || node->elementRectFails) {
    return node == nullptr ? kElementNotAvailable : E_FAIL;
  }
  *rect = node->rect;
  return S_OK;
}

HRESULT Desktop::State::ClickablePoint(uia::Node element, POINT* point, BOOL* gotClickable) {
  const std::lock_guard guard(mutex);
  const Node* node = Find(element);
  if (node == nullptr) {
    return kElementNotAvailable;
  }
  const POINT centre{node->rect.left + (node->rect.right - node->rect.left) / 2,
                     node->rect.top + (node->rect.bottom - node->rect.top) / 2};
  const std::optional<POINT> clickable = node->clickablePoint.value_or(centre);
  if (!clickable) {
    return E_FAIL;
  }
  *point = *clickable;
  *gotClickable = TRUE;
  return S_OK;
}

// ---- Scripting ----

Element Desktop::AddElement(Element parent, const ElementSpec& element) {
  const std::lock_guard guard(state_->mutex);
  const Element id = state_->nextElement++;
  Node& node = state_->nodes[id];
  node.id = id;
  node.parent = parent;
  node.element = element;
  node.rect = element.rect;
  node.z = state_->nextZ++;
  state_->nodes[parent].children.push_back(id);
  return id;
}

Element Desktop::AddElement(HWND parent, const ElementSpec& element) {
  return AddElement(ElementFor(parent), element);
}

void Desktop::DestroyElement(Element element) {
  const std::lock_guard guard(state_->mutex);
  state_->Remove(element);
}

Element Desktop::ElementOf(HWND window) const {
  return ElementFor(window);
}

Element Desktop::RootElement() const {
  return kRootElement;
}

RECT Desktop::RectOf(Element element) const {
  const std::lock_guard guard(state_->mutex);
  return state_->Find(element)->rect;
}

std::vector<Element> Desktop::ChildrenOf(Element element) const {
  const std::lock_guard guard(state_->mutex);
  return state_->Find(element)->children;
}

void Desktop::SetProperty(Element element, PROPERTYID property, TextView text) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->overrides[property] = {PropertyOverride::Kind::String, Text(text), S_OK};
}

void Desktop::SetNullString(Element element, PROPERTYID property) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->overrides[property] = {PropertyOverride::Kind::NullString, {}, S_OK};
}

void Desktop::SetUnsupported(Element element, PROPERTYID property) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->overrides[property] = {PropertyOverride::Kind::Unsupported, {}, S_OK};
}

void Desktop::FailProperty(Element element, PROPERTYID property, HRESULT result) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->overrides[property] = {PropertyOverride::Kind::Failure, {}, result};
}

void Desktop::SetClickablePoint(Element element, std::optional<POINT> point) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->clickablePoint = point;
}

void Desktop::FailRectangle(Element element) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->elementRectFails = true;
}

void Desktop::HideFromArrays(Element element) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->hiddenFromArrays = true;
}

void Desktop::HideFromCache(Element element) {
  const std::lock_guard guard(state_->mutex);
  state_->Find(element)->hiddenFromCache = true;
}

}  // namespace standin
