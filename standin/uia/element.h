// Elements, arrays of them, and the request that says what a search brings along.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "standin/uia/condition.h"
#include "standin/uia/object.h"

namespace standin::uia {

// The properties of one element as a search found them.
using Cache = std::vector<std::pair<PROPERTYID, PropertyValue>>;

class CacheRequest final : public Object<IUIAutomationCacheRequest> {
 public:
  explicit CacheRequest(Tree& tree);

  HRESULT STDMETHODCALLTYPE AddProperty(PROPERTYID property) override;
  HRESULT STDMETHODCALLTYPE put_TreeFilter(IUIAutomationCondition* filter) override;

  bool Admits(Node node) const;
  std::shared_ptr<const Cache> Read(Node node) const;

 private:
  std::vector<PROPERTYID> properties_;
  Held<Condition> filter_;
};

class Element final : public Object<IUIAutomationElement> {
 public:
  Element(Tree& tree, Node node, std::shared_ptr<const Cache> cache = nullptr);

  Node AsNode() const {
    return node_;
  }

  HRESULT STDMETHODCALLTYPE FindFirst(TreeScope scope, IUIAutomationCondition* condition,
                                      IUIAutomationElement** found) override;
  HRESULT STDMETHODCALLTYPE FindAll(TreeScope scope, IUIAutomationCondition* condition,
                                    IUIAutomationElementArray** found) override;
  HRESULT STDMETHODCALLTYPE FindAllBuildCache(TreeScope scope, IUIAutomationCondition* condition,
                                              IUIAutomationCacheRequest* request,
                                              IUIAutomationElementArray** found) override;
  HRESULT STDMETHODCALLTYPE GetCurrentPropertyValue(PROPERTYID property, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE GetCachedPropertyValue(PROPERTYID property, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE GetCurrentPattern(PATTERNID pattern, IUnknown** object) override;
  HRESULT STDMETHODCALLTYPE get_CurrentControlType(CONTROLTYPEID* controlType) override;
  HRESULT STDMETHODCALLTYPE get_CurrentName(BSTR* name) override;
  HRESULT STDMETHODCALLTYPE get_CurrentAutomationId(BSTR* automationId) override;
  HRESULT STDMETHODCALLTYPE get_CurrentClassName(BSTR* className) override;
  HRESULT STDMETHODCALLTYPE get_CurrentNativeWindowHandle(UIA_HWND* window) override;
  HRESULT STDMETHODCALLTYPE get_CurrentBoundingRectangle(RECT* rect) override;
  HRESULT STDMETHODCALLTYPE GetClickablePoint(POINT* point, BOOL* gotClickable) override;

 private:
  HRESULT CurrentText(const char* method, PROPERTYID property, BSTR* text);
  HRESULT ToVariant(const PropertyValue& property, VARIANT* value);

  const Node node_;
  const std::shared_ptr<const Cache> cache_;
};

}  // namespace standin::uia
