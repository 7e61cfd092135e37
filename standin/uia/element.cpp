#include "standin/uia/element.h"

#include <algorithm>

namespace standin::uia {
namespace {

struct Found {
  Node node;
  std::shared_ptr<const Cache> cache;
};

class ElementArray final : public Object<IUIAutomationElementArray> {
 public:
  ElementArray(Tree& tree, std::vector<Found> found)
      : Object(tree, IID_IUIAutomationElementArray, "IUIAutomationElementArray"), found_(std::move(found)) {}

  HRESULT STDMETHODCALLTYPE get_Length(int* length) override {
    return Call("IUIAutomationElementArray::get_Length", [&]() -> HRESULT {
      if (length == nullptr) {
        return E_POINTER;
      }
      *length = static_cast<int>(found_.size());
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE GetElement(int index, IUIAutomationElement** element) override {
    return CallFor("IUIAutomationElementArray::GetElement", element, [&]() -> HRESULT {
      if (index < 0 || static_cast<std::size_t>(index) >= found_.size()) {
        return E_INVALIDARG;
      }
      const Found& wanted = found_[static_cast<std::size_t>(index)];
      // One that has gone since is handed out all the same.
      const HRESULT handedOut = tree_.Property(wanted.node, kHandedOutByArrays).result;
      if (FAILED(handedOut) && handedOut != kElementNotAvailable) {
        return handedOut;
      }
      *element = new Element(tree_, wanted.node, wanted.cache);
      return S_OK;
    });
  }

 private:
  const std::vector<Found> found_;
};

// Calls `visit` for the elements below `node`, parents before their children, until it returns false.
template <class Visit>
void Walk(Tree& tree, Node node, TreeScope scope, Visit visit) {
  std::vector<Node> pending = tree.Children(node);
  std::reverse(pending.begin(), pending.end());
  while (!pending.empty()) {
    const Node next = pending.back();
    pending.pop_back();
    if (!visit(next)) {
      return;
    }
    if (scope == TreeScope_Descendants) {
      const std::vector<Node> children = tree.Children(next);
      pending.insert(pending.end(), children.rbegin(), children.rend());
    }
  }
}

HRESULT CheckSearch(Tree& tree, Node node, TreeScope scope, const IUIAutomationCondition* condition) {
  if (condition == nullptr || (scope != TreeScope_Children && scope != TreeScope_Descendants)) {
    return E_INVALIDARG;
  }
  return tree.Exists(node) ? S_OK : kElementNotAvailable;
}

// A null `request` brings nothing along.
std::vector<Found> Search(Tree& tree, Node node, TreeScope scope, IUIAutomationCondition* condition,
                          IUIAutomationCacheRequest* request) {
  const Condition& wanted = *static_cast<const Condition*>(condition);
  const CacheRequest* const bring = static_cast<const CacheRequest*>(request);
  std::vector<Found> all;
  Walk(tree, node, scope, [&](Node candidate) {
    if (wanted.Matches(candidate) && (bring == nullptr || bring->Admits(candidate))) {
      all.push_back({candidate, bring == nullptr ? nullptr : bring->Read(candidate)});
    }
    return true;
  });
  return all;
}

}  // namespace

CacheRequest::CacheRequest(Tree& tree)
    : Object(tree, IID_IUIAutomationCacheRequest, "IUIAutomationCacheRequest"), filter_(nullptr) {}

HRESULT CacheRequest::AddProperty(PROPERTYID property) {
  return Call("IUIAutomationCacheRequest::AddProperty", [&]() -> HRESULT {
    if (std::find(properties_.begin(), properties_.end(), property) == properties_.end()) {
      properties_.push_back(property);
    }
    return S_OK;
  });
}

HRESULT CacheRequest::put_TreeFilter(IUIAutomationCondition* filter) {
  return Call("IUIAutomationCacheRequest::put_TreeFilter", [&]() -> HRESULT {
    if (filter == nullptr) {
      return E_INVALIDARG;
    }
    filter_.Set(static_cast<Condition*>(filter));
    return S_OK;
  });
}

bool CacheRequest::Admits(Node node) const {
  return filter_.Get() == nullptr || filter_.Get()->Matches(node);
}

std::shared_ptr<const Cache> CacheRequest::Read(Node node) const {
  const HRESULT readable = tree_.Property(node, kReadableFromCache).result;
  auto cache = std::make_shared<Cache>();
  for (const PROPERTYID property : properties_) {
    PropertyValue value;
    if (FAILED(readable)) {
      value.result = readable;
    } else {
      value = tree_.Property(node, property);
    }
    cache->emplace_back(property, std::move(value));
  }
  return cache;
}

Element::Element(Tree& tree, Node node, std::shared_ptr<const Cache> cache)
    : Object(tree, IID_IUIAutomationElement, "IUIAutomationElement"), node_(node), cache_(std::move(cache)) {}

HRESULT Element::FindFirst(TreeScope scope, IUIAutomationCondition* condition, IUIAutomationElement** found) {
  return CallFor("IUIAutomationElement::FindFirst", found, [&]() -> HRESULT {
    const HRESULT checked = CheckSearch(tree_, node_, scope, condition);
    if (FAILED(checked)) {
      return checked;
    }
    const Condition& wanted = *static_cast<const Condition*>(condition);
    Node first = 0;
    Walk(tree_, node_, scope, [&](Node candidate) {
      if (wanted.Matches(candidate)) {
        first = candidate;
      }
      return first == 0;
    });
    if (first != 0) {
      *found = new Element(tree_, first);
    }
    return S_OK;
  });
}

HRESULT Element::FindAll(TreeScope scope, IUIAutomationCondition* condition, IUIAutomationElementArray** found) {
  return CallFor("IUIAutomationElement::FindAll", found, [&]() -> HRESULT {
    const HRESULT checked = CheckSearch(tree_, node_, scope, condition);
    if (FAILED(checked)) {
      return checked;
    }
    *found = new ElementArray(tree_, Search(tree_, node_, scope, condition, nullptr));
    return S_OK;
  });
}

HRESULT Element::FindAllBuildCache(TreeScope scope, IUIAutomationCondition* condition,
                                   IUIAutomationCacheRequest* request, IUIAutomationElementArray** found) {
  return CallFor("IUIAutomationElement::FindAllBuildCache", found, [&]() -> HRESULT {
    if (request == nullptr) {
      return E_INVALIDARG;
    }
    const HRESULT checked = CheckSearch(tree_, node_, scope, condition);
    if (FAILED(checked)) {
      return checked;
    }
    *found = new ElementArray(tree_, Search(tree_, node_, scope, condition, request));
    return S_OK;
  });
}

HRESULT Element::ToVariant(const PropertyValue& property, VARIANT* value) {
  if (FAILED(property.result)) {
    return property.result;
  }
  if (property.type == VT_I4) {
    value->lVal = property.number;
  } else if (property.type == VT_R8) {
    value->dblVal = property.number;
  } else if (property.type == VT_BOOL) {
    value->boolVal = static_cast<VARIANT_BOOL>(property.number);
  } else if (property.type == VT_BSTR && !property.isNull) {
    value->bstrVal = tree_.NewString(property.text);
    if (value->bstrVal == nullptr) {
      return E_OUTOFMEMORY;
    }
  }
  value->vt = property.type;
  return S_OK;
}

HRESULT Element::GetCurrentPropertyValue(PROPERTYID property, VARIANT* value) {
  return Call("IUIAutomationElement::GetCurrentPropertyValue", [&]() -> HRESULT {
    if (value == nullptr) {
      return E_POINTER;
    }
    *value = VARIANT{};
    if (!tree_.Exists(node_)) {
      return kElementNotAvailable;
    }
    return ToVariant(tree_.Property(node_, property), value);
  });
}

HRESULT Element::GetCachedPropertyValue(PROPERTYID property, VARIANT* value) {
  return Call("IUIAutomationElement::GetCachedPropertyValue", [&]() -> HRESULT {
    if (value == nullptr) {
      return E_POINTER;
    }
    *value = VARIANT{};
    if (cache_ == nullptr) {
      return E_INVALIDARG;
    }
    const auto cached = std::find_if(cache_->begin(), cache_->end(),
                                     [property](const Cache::value_type& entry) { return entry.first == property; });
    return cached == cache_->end() ? E_INVALIDARG : ToVariant(cached->second, value);
  });
}

// No element of ours can do more than its properties tell; that is success without an object.
HRESULT Element::GetCurrentPattern(PATTERNID /*pattern*/, IUnknown** object) {
  return CallFor("IUIAutomationElement::GetCurrentPattern", object,
                 [&]() -> HRESULT { return tree_.Exists(node_) ? S_OK : kElementNotAvailable; });
}

HRESULT Element::get_CurrentControlType(CONTROLTYPEID* controlType) {
  return Call("IUIAutomationElement::get_CurrentControlType", [&]() -> HRESULT {
    if (controlType == nullptr) {
      return E_POINTER;
    }
    *controlType = 0;
    if (!tree_.Exists(node_)) {
      return kElementNotAvailable;
    }
    const PropertyValue value = tree_.Property(node_, UIA_ControlTypePropertyId);
    if (SUCCEEDED(value.result)) {
      *controlType = value.number;
    }
    return value.result;
  });
}

HRESULT Element::CurrentText(const char* method, PROPERTYID property, BSTR* text) {
  return CallFor(method, text, [&]() -> HRESULT {
    if (!tree_.Exists(node_)) {
      return kElementNotAvailable;
    }
    const PropertyValue value = tree_.Property(node_, property);
    if (FAILED(value.result) || value.type != VT_BSTR || value.isNull) {
      return value.result;
    }
    *text = tree_.NewString(value.text);
    return *text == nullptr ? E_OUTOFMEMORY : S_OK;
  });
}

HRESULT Element::get_CurrentName(BSTR* name) {
  return CurrentText("IUIAutomationElement::get_CurrentName", UIA_NamePropertyId, name);
}

HRESULT Element::get_CurrentAutomationId(BSTR* automationId) {
  return CurrentText("IUIAutomationElement::get_CurrentAutomationId", UIA_AutomationIdPropertyId, automationId);
}

HRESULT Element::get_CurrentClassName(BSTR* className) {
  return CurrentText("IUIAutomationElement::get_CurrentClassName", UIA_ClassNamePropertyId, className);
}

HRESULT Element::get_CurrentNativeWindowHandle(UIA_HWND* window) {
  return Call("IUIAutomationElement::get_CurrentNativeWindowHandle", [&]() -> HRESULT {
    if (window == nullptr) {
      return E_POINTER;
    }
    *window = nullptr;
    if (!tree_.Exists(node_)) {
      return kElementNotAvailable;
    }
    const HRESULT answered = tree_.Property(node_, kNativeWindowHandle).result;
    if (SUCCEEDED(answered)) {
      *window = tree_.WindowOf(node_);
    }
    return answered;
  });
}

HRESULT Element::get_CurrentBoundingRectangle(RECT* rect) {
  return Call("IUIAutomationElement::get_CurrentBoundingRectangle", [&]() -> HRESULT {
    if (rect == nullptr) {
      return E_POINTER;
    }
    *rect = RECT{};
    return tree_.Exists(node_) ? tree_.Rectangle(node_, rect) : kElementNotAvailable;
  });
}

HRESULT Element::GetClickablePoint(POINT* point, BOOL* gotClickable) {
  return Call("IUIAutomationElement::GetClickablePoint", [&]() -> HRESULT {
    if (point == nullptr || gotClickable == nullptr) {
      return E_POINTER;
    }
    *point = POINT{};
    *gotClickable = FALSE;
    return tree_.Exists(node_) ? tree_.ClickablePoint(node_, point, gotClickable) : kElementNotAvailable;
  });
}

}  // namespace standin::uia
