#include <algorithm>

#include "standin/uia/condition.h"
#include "standin/uia/element.h"
#include "standin/uia/object.h"
#include "standin/uia/tree.h"

namespace standin::uia {
namespace {

Node NodeOf(IUIAutomationElement* element) {
  return static_cast<Element*>(element)->AsNode();
}

class TreeWalker final : public Object<IUIAutomationTreeWalker> {
 public:
  explicit TreeWalker(Tree& tree) : Object(tree, IID_IUIAutomationTreeWalker, "IUIAutomationTreeWalker") {}

  HRESULT STDMETHODCALLTYPE GetParentElement(IUIAutomationElement* element, IUIAutomationElement** parent) override {
    return Walk("IUIAutomationTreeWalker::GetParentElement", element, parent,
                [this](Node node) { return tree_.Parent(node); });
  }

  HRESULT STDMETHODCALLTYPE GetFirstChildElement(IUIAutomationElement* element, IUIAutomationElement** first) override {
    return Walk("IUIAutomationTreeWalker::GetFirstChildElement", element, first, [this](Node node) {
      const std::vector<Node> children = tree_.Children(node);
      return children.empty() ? Node{0} : children.front();
    });
  }

  HRESULT STDMETHODCALLTYPE GetNextSiblingElement(IUIAutomationElement* element, IUIAutomationElement** next) override {
    return Walk("IUIAutomationTreeWalker::GetNextSiblingElement", element, next, [this](Node node) {
      const Node parent = tree_.Parent(node);
      const std::vector<Node> siblings = parent == 0 ? std::vector<Node>() : tree_.Children(parent);
      const auto here = std::find(siblings.begin(), siblings.end(), node);
      return siblings.end() - here < 2 ? Node{0} : *(here + 1);
    });
  }

 private:
  // One step from an element; success without an element where the tree ends.
  template <class Step>
  HRESULT Walk(const char* method, IUIAutomationElement* element, IUIAutomationElement** reached, const Step& step) {
    return CallFor(method, reached, [&]() -> HRESULT {
      if (element == nullptr) {
        return E_INVALIDARG;
      }
      const Node node = NodeOf(element);
      if (!tree_.Exists(node)) {
        return kElementNotAvailable;
      }
      if (const Node there = step(node); there != 0) {
        *reached = new Element(tree_, there);
      }
      return S_OK;
    });
  }
};

class Automation final : public Object<IUIAutomation> {
 public:
  explicit Automation(Tree& tree) : Object(tree, IID_IUIAutomation, "IUIAutomation") {}

  HRESULT STDMETHODCALLTYPE CompareElements(IUIAutomationElement* a, IUIAutomationElement* b, BOOL* same) override {
    return Call("IUIAutomation::CompareElements", [&]() -> HRESULT {
      if (same == nullptr) {
        return E_POINTER;
      }
      *same = FALSE;
      if (a == nullptr || b == nullptr) {
        return E_INVALIDARG;
      }
      *same = NodeOf(a) == NodeOf(b) ? TRUE : FALSE;
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE ElementFromHandle(UIA_HWND window, IUIAutomationElement** element) override {
    return CallFor("IUIAutomation::ElementFromHandle", element, [&]() -> HRESULT {
      const Node node = tree_.OfWindow(static_cast<HWND>(window));
      if (node == 0) {
        return kElementNotAvailable;
      }
      *element = new Element(tree_, node);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE ElementFromPoint(POINT point, IUIAutomationElement** element) override {
    return CallFor("IUIAutomation::ElementFromPoint", element, [&]() -> HRESULT {
      const Node node = tree_.At(point);
      if (node != 0) {
        *element = new Element(tree_, node);
      }
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE get_ControlViewWalker(IUIAutomationTreeWalker** walker) override {
    return CallFor("IUIAutomation::get_ControlViewWalker", walker, [&]() -> HRESULT {
      *walker = new TreeWalker(tree_);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE get_ControlViewCondition(IUIAutomationCondition** condition) override {
    return CallFor("IUIAutomation::get_ControlViewCondition", condition, [&]() -> HRESULT {
      *condition = MakeTrueCondition(tree_);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE CreateCacheRequest(IUIAutomationCacheRequest** request) override {
    return CallFor("IUIAutomation::CreateCacheRequest", request, [&]() -> HRESULT {
      *request = new CacheRequest(tree_);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE CreateTrueCondition(IUIAutomationCondition** condition) override {
    return CallFor("IUIAutomation::CreateTrueCondition", condition, [&]() -> HRESULT {
      *condition = MakeTrueCondition(tree_);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE CreatePropertyCondition(PROPERTYID property, VARIANT value,
                                                    IUIAutomationCondition** condition) override {
    return CallFor("IUIAutomation::CreatePropertyCondition", condition,
                   [&]() -> HRESULT { return MakePropertyCondition(tree_, property, value, condition); });
  }

  HRESULT STDMETHODCALLTYPE CreateAndCondition(IUIAutomationCondition* a, IUIAutomationCondition* b,
                                               IUIAutomationCondition** condition) override {
    return CallFor("IUIAutomation::CreateAndCondition", condition, [&]() -> HRESULT {
      if (a == nullptr || b == nullptr) {
        return E_INVALIDARG;
      }
      *condition = MakeAndCondition(tree_, static_cast<Condition*>(a), static_cast<Condition*>(b));
      return S_OK;
    });
  }
};

}  // namespace

HRESULT MakeAutomation(Tree& tree, REFIID iid, void** object) try {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  if (iid != IID_IUIAutomation && iid != IID_IUnknown) {
    return E_NOINTERFACE;
  }
  *object = static_cast<IUIAutomation*>(new Automation(tree));
  return S_OK;
} catch (const std::bad_alloc&) {
  return E_OUTOFMEMORY;
} catch (...) {
  return E_FAIL;
}

}  // namespace standin::uia
