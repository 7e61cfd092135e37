#include "host/world/elements.h"

#include <utility>

#include "platform/owners.h"

namespace host::world {

namespace {

using korvane::Bstr;
using korvane::ComPtr;
using korvane::ConditionPtr;
using korvane::ElementArrayPtr;
using korvane::ElementPtr;
using korvane::Variant;
using korvane::WalkerPtr;

ComPtr<IUIAutomation> g_automation;

// What can be shown by scrolling. Declared here alone: nothing else needs it.
struct IUIAutomationScrollItemPattern : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE ScrollIntoView() = 0;
};
constexpr PATTERNID kScrollItemPattern = 10017;
constexpr IID kScrollItemPatternInterface = {
    0xB488300F, 0xD015, 0x4F19, {0x9C, 0x29, 0xBB, 0x59, 0x5E, 0x36, 0x45, 0xEF}};

IUIAutomationElement* Live(const Element& element) {
  return static_cast<IUIAutomationElement*>(element.live.get());
}

WideText TextOf(const Variant& value) {
  return value.Text() == nullptr ? WideText() : WideText(value.Text());
}

constexpr PROPERTYID kDescribing[] = {UIA_ControlTypePropertyId, UIA_ClassNamePropertyId, UIA_AutomationIdPropertyId};

std::optional<Element> Kept(ElementPtr found) {
  if (!found) {
    return std::nullopt;
  }
  Element element;
  element.live = std::shared_ptr<void>(found.Detach(), [](void* held) {
    static_cast<void>(ElementPtr::Adopt(static_cast<IUIAutomationElement*>(held)));
  });
  return element;
}

// `get` hands a property's value out; false: it does not.
template <class Get>
void Describe(Element& element, Get get) {
  for (const PROPERTYID property : kDescribing) {
    Variant value;
    if (!get(property, value)) {
      Live(element)->GetCurrentPropertyValue(property, value.Receive());
    }
    if (property == UIA_ControlTypePropertyId) {
      element.controlType = value.Get().vt == VT_I4 ? static_cast<int>(value.Get().lVal) : 0;
    } else {
      (property == UIA_ClassNamePropertyId ? element.className : element.automationId) = TextOf(value);
    }
  }
}

ConditionPtr PropertyIs(PROPERTYID property, const Variant& value) {
  ConditionPtr condition;
  g_automation->CreatePropertyCondition(property, value.Get(), condition.Receive());
  return condition;
}

// None when it cannot be made.
ConditionPtr ConditionOf(int controlType, const WideText& className) {
  ConditionPtr condition;
  if (controlType == 0) {
    g_automation->CreateTrueCondition(condition.Receive());
    return condition;
  }
  ConditionPtr ofType = PropertyIs(UIA_ControlTypePropertyId, Variant(LONG{controlType}));
  if (className.empty()) {
    return ofType;
  }
  const ConditionPtr ofClass = PropertyIs(UIA_ClassNamePropertyId, Variant(className.c_str()));
  if (ofType && ofClass) {
    g_automation->CreateAndCondition(ofType.Get(), ofClass.Get(), condition.Receive());
  }
  return condition;
}

std::vector<Element> FindAll(const Element& root, TreeScope scope, const ConditionPtr& condition) {
  ComPtr<IUIAutomationCacheRequest> request;
  if (!condition || FAILED(g_automation->CreateCacheRequest(request.Receive())) || !request) {
    return {};
  }
  for (const PROPERTYID property : kDescribing) {
    request->AddProperty(property);
  }
  ElementArrayPtr found;
  int length = 0;
  if (FAILED(Live(root)->FindAllBuildCache(scope, condition.Get(), request.Get(), found.Receive())) || !found ||
      FAILED(found->get_Length(&length))) {
    return {};
  }
  std::vector<Element> elements;
  for (int i = 0; i < length; ++i) {
    ElementPtr one;
    found->GetElement(i, one.Receive());
    if (auto element = Kept(std::move(one))) {
      Describe(*element, [&](PROPERTYID property, Variant& value) {
        return SUCCEEDED(Live(*element)->GetCachedPropertyValue(property, value.Receive()));
      });
      elements.push_back(std::move(*element));
    }
  }
  return elements;
}

}  // namespace

ElementAccess::ElementAccess() {
  CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation,
                   reinterpret_cast<void**>(g_automation.Receive()));
}

ElementAccess::~ElementAccess() {
  g_automation = {};
}

bool ElementAccess::IsGranted() {
  return static_cast<bool>(g_automation);
}

Element Described(Element element) {
  Describe(element, [](PROPERTYID, Variant&) { return false; });
  return element;
}

std::optional<Element> ElementOfWindow(HWND window) {
  ElementPtr element;
  g_automation->ElementFromHandle(window, element.Receive());
  return Kept(std::move(element));
}

std::optional<Element> ElementUnder(Point point) {
  ElementPtr element;
  g_automation->ElementFromPoint({point.x, point.y}, element.Receive());
  return Kept(std::move(element));
}

std::optional<Element> Parent(const Element& element) {
  WalkerPtr walker;
  if (FAILED(g_automation->get_ControlViewWalker(walker.Receive())) || !walker) {
    return std::nullopt;
  }
  ElementPtr parent;
  walker->GetParentElement(Live(element), parent.Receive());
  return Kept(std::move(parent));
}

std::vector<Element> Children(const Element& parent, int controlType, const WideText& className) {
  return FindAll(parent, TreeScope_Children, ConditionOf(controlType, className));
}

std::vector<Element> OfType(const Element& root, int controlType) {
  return FindAll(root, TreeScope_Descendants, ConditionOf(controlType, {}));
}

std::vector<Element> WithAutomationId(const Element& root, const WideText& automationId) {
  return FindAll(root, TreeScope_Descendants, PropertyIs(UIA_AutomationIdPropertyId, Variant(automationId.c_str())));
}

bool Same(const Element& left, const Element& right) {
  BOOL same = FALSE;
  return SUCCEEDED(g_automation->CompareElements(Live(left), Live(right), &same)) && same;
}

std::optional<Rect> RectOf(const Element& element) {
  RECT rect{};
  return SUCCEEDED(Live(element)->get_CurrentBoundingRectangle(&rect))
             ? std::optional(Rect{static_cast<int>(rect.left), static_cast<int>(rect.top), static_cast<int>(rect.right),
                                  static_cast<int>(rect.bottom)})
             : std::nullopt;
}

std::optional<Point> ClickPoint(const Element& element) {
  POINT point{};
  BOOL got = FALSE;
  if (SUCCEEDED(Live(element)->GetClickablePoint(&point, &got))) {
    return Point{static_cast<int>(point.x), static_cast<int>(point.y)};
  }
  const auto rect = RectOf(element);
  return rect ? std::optional(Point{(rect->left + rect->right) / 2, (rect->top + rect->bottom) / 2}) : std::nullopt;
}

HWND WindowOf(const Element& element) {
  UIA_HWND window = nullptr;
  Live(element)->get_CurrentNativeWindowHandle(&window);
  return static_cast<HWND>(window);
}

WideText NameOf(const Element& element) {
  Bstr name;
  Live(element)->get_CurrentName(name.Receive());
  return name ? WideText(name.Get()) : WideText();
}

std::optional<WideText> ValueOf(const Element& element) {
  Variant value;
  Live(element)->GetCurrentPropertyValue(UIA_ValueValuePropertyId, value.Receive());
  return value.Text() == nullptr ? std::nullopt : std::optional(WideText(value.Text()));
}

bool ScrollIntoView(const Element& element) {
  ComPtr<IUnknown> pattern;
  ComPtr<IUIAutomationScrollItemPattern> item;
  return SUCCEEDED(Live(element)->GetCurrentPattern(kScrollItemPattern, pattern.Receive())) && pattern &&
         SUCCEEDED(pattern->QueryInterface(kScrollItemPatternInterface, reinterpret_cast<void**>(item.Receive()))) &&
         item && SUCCEEDED(item->ScrollIntoView());
}

}  // namespace host::world
