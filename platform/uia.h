// The UI Automation client interfaces, in the platform's vtable order up to the last method that is called. A method
// whose place matters but which is never called is an unnamed-argument slot that answers E_NOTIMPL.
#pragma once

#include "platform/platform.h"

using PROPERTYID = int;
using CONTROLTYPEID = int;
using PATTERNID = int;
using UIA_HWND = void*;

inline constexpr PROPERTYID UIA_ControlTypePropertyId = 30003;
inline constexpr PROPERTYID UIA_NamePropertyId = 30005;
inline constexpr PROPERTYID UIA_AutomationIdPropertyId = 30011;
inline constexpr PROPERTYID UIA_ClassNamePropertyId = 30012;
inline constexpr PROPERTYID UIA_ValueValuePropertyId = 30045;
inline constexpr PROPERTYID UIA_LegacyIAccessibleNamePropertyId = 30092;
inline constexpr PROPERTYID UIA_LegacyIAccessibleValuePropertyId = 30093;
inline constexpr PROPERTYID UIA_LegacyIAccessibleDescriptionPropertyId = 30094;
inline constexpr CONTROLTYPEID UIA_WindowControlTypeId = 50032;

enum TreeScope : int { TreeScope_Children = 2, TreeScope_Descendants = 4 };

inline constexpr CLSID CLSID_CUIAutomation = {
    0xFF48DBA4, 0x60EF, 0x4201, {0xAA, 0x87, 0x54, 0x10, 0x3E, 0xEF, 0x59, 0x4E}};
inline constexpr IID IID_IUIAutomationCondition = {
    0x352FFBA8, 0x0973, 0x437C, {0xA6, 0x1F, 0xF6, 0x4C, 0xAF, 0xD8, 0x1D, 0xF9}};
inline constexpr IID IID_IUIAutomationElementArray = {
    0x14314595, 0xB4BC, 0x4055, {0x95, 0xF2, 0x58, 0xF2, 0xE4, 0x2C, 0x98, 0x55}};
inline constexpr IID IID_IUIAutomationCacheRequest = {
    0xB32A92B5, 0xBC25, 0x4078, {0x9C, 0x08, 0xD7, 0xEE, 0x95, 0xC4, 0x8E, 0x03}};
inline constexpr IID IID_IUIAutomationTreeWalker = {
    0x4042C624, 0x389C, 0x4AFC, {0xA6, 0x30, 0x9D, 0xF8, 0x54, 0xA5, 0x41, 0xFC}};
inline constexpr IID IID_IUIAutomationElement = {
    0xD22108AA, 0x8AC5, 0x49A5, {0x83, 0x7B, 0x37, 0xBB, 0xB3, 0xD7, 0x59, 0x1E}};
inline constexpr IID IID_IUIAutomation = {0x30CBE57D, 0xD9D0, 0x452A, {0xAB, 0x13, 0x7A, 0xC5, 0xAC, 0x48, 0x25, 0xEE}};

struct IUIAutomationElement;

#define KORVANE_UNUSED_SLOT(name)            \
  virtual HRESULT STDMETHODCALLTYPE name() { \
    return E_NOTIMPL;                        \
  }

struct IUIAutomationCondition : IUnknown {};

struct IUIAutomationElementArray : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_Length(int* length) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetElement(int index, IUIAutomationElement** element) = 0;
};

struct IUIAutomationCacheRequest : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE AddProperty(PROPERTYID property) = 0;
  KORVANE_UNUSED_SLOT(AddPattern)
  KORVANE_UNUSED_SLOT(Clone)
  KORVANE_UNUSED_SLOT(get_TreeScope)
  KORVANE_UNUSED_SLOT(put_TreeScope)
  KORVANE_UNUSED_SLOT(get_TreeFilter)
  virtual HRESULT STDMETHODCALLTYPE put_TreeFilter(IUIAutomationCondition* filter) = 0;
};

struct IUIAutomationTreeWalker : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetParentElement(IUIAutomationElement* element, IUIAutomationElement** parent) = 0;
  // Not called by the library: for programs that are compared with it.
  virtual HRESULT STDMETHODCALLTYPE GetFirstChildElement(IUIAutomationElement* element,
                                                         IUIAutomationElement** first) = 0;
  KORVANE_UNUSED_SLOT(GetLastChildElement)
  virtual HRESULT STDMETHODCALLTYPE GetNextSiblingElement(IUIAutomationElement* element,
                                                          IUIAutomationElement** next) = 0;
};

struct IUIAutomationElement : IUnknown {
  KORVANE_UNUSED_SLOT(SetFocus)
  KORVANE_UNUSED_SLOT(GetRuntimeId)
  virtual HRESULT STDMETHODCALLTYPE FindFirst(TreeScope scope, IUIAutomationCondition* condition,
                                              IUIAutomationElement** found) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindAll(TreeScope scope, IUIAutomationCondition* condition,
                                            IUIAutomationElementArray** found) = 0;
  KORVANE_UNUSED_SLOT(FindFirstBuildCache)
  virtual HRESULT STDMETHODCALLTYPE FindAllBuildCache(TreeScope scope, IUIAutomationCondition* condition,
                                                      IUIAutomationCacheRequest* request,
                                                      IUIAutomationElementArray** found) = 0;
  KORVANE_UNUSED_SLOT(BuildUpdatedCache)
  virtual HRESULT STDMETHODCALLTYPE GetCurrentPropertyValue(PROPERTYID property, VARIANT* value) = 0;
  KORVANE_UNUSED_SLOT(GetCurrentPropertyValueEx)
  virtual HRESULT STDMETHODCALLTYPE GetCachedPropertyValue(PROPERTYID property, VARIANT* value) = 0;
  KORVANE_UNUSED_SLOT(GetCachedPropertyValueEx)
  KORVANE_UNUSED_SLOT(GetCurrentPatternAs)
  KORVANE_UNUSED_SLOT(GetCachedPatternAs)
  // Not called by the library: for the companion program.
  virtual HRESULT STDMETHODCALLTYPE GetCurrentPattern(PATTERNID pattern, IUnknown** object) = 0;
  KORVANE_UNUSED_SLOT(GetCachedPattern)
  KORVANE_UNUSED_SLOT(GetCachedParent)
  KORVANE_UNUSED_SLOT(GetCachedChildren)
  KORVANE_UNUSED_SLOT(get_CurrentProcessId)
  virtual HRESULT STDMETHODCALLTYPE get_CurrentControlType(CONTROLTYPEID* controlType) = 0;
  KORVANE_UNUSED_SLOT(get_CurrentLocalizedControlType)
  virtual HRESULT STDMETHODCALLTYPE get_CurrentName(BSTR* name) = 0;
  KORVANE_UNUSED_SLOT(get_CurrentAcceleratorKey)
  KORVANE_UNUSED_SLOT(get_CurrentAccessKey)
  KORVANE_UNUSED_SLOT(get_CurrentHasKeyboardFocus)
  KORVANE_UNUSED_SLOT(get_CurrentIsKeyboardFocusable)
  KORVANE_UNUSED_SLOT(get_CurrentIsEnabled)
  virtual HRESULT STDMETHODCALLTYPE get_CurrentAutomationId(BSTR* automationId) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CurrentClassName(BSTR* className) = 0;
  KORVANE_UNUSED_SLOT(get_CurrentHelpText)
  KORVANE_UNUSED_SLOT(get_CurrentCulture)
  KORVANE_UNUSED_SLOT(get_CurrentIsControlElement)
  KORVANE_UNUSED_SLOT(get_CurrentIsContentElement)
  KORVANE_UNUSED_SLOT(get_CurrentIsPassword)
  virtual HRESULT STDMETHODCALLTYPE get_CurrentNativeWindowHandle(UIA_HWND* window) = 0;
  KORVANE_UNUSED_SLOT(get_CurrentItemType)
  KORVANE_UNUSED_SLOT(get_CurrentIsOffscreen)
  KORVANE_UNUSED_SLOT(get_CurrentOrientation)
  KORVANE_UNUSED_SLOT(get_CurrentFrameworkId)
  KORVANE_UNUSED_SLOT(get_CurrentIsRequiredForForm)
  KORVANE_UNUSED_SLOT(get_CurrentItemStatus)
  virtual HRESULT STDMETHODCALLTYPE get_CurrentBoundingRectangle(RECT* rect) = 0;
  KORVANE_UNUSED_SLOT(get_CurrentLabeledBy)
  KORVANE_UNUSED_SLOT(get_CurrentAriaRole)
  KORVANE_UNUSED_SLOT(get_CurrentAriaProperties)
  KORVANE_UNUSED_SLOT(get_CurrentIsDataValidForForm)
  KORVANE_UNUSED_SLOT(get_CurrentControllerFor)
  KORVANE_UNUSED_SLOT(get_CurrentDescribedBy)
  KORVANE_UNUSED_SLOT(get_CurrentFlowsTo)
  KORVANE_UNUSED_SLOT(get_CurrentProviderDescription)
  KORVANE_UNUSED_SLOT(get_CachedProcessId)
  KORVANE_UNUSED_SLOT(get_CachedControlType)
  KORVANE_UNUSED_SLOT(get_CachedLocalizedControlType)
  KORVANE_UNUSED_SLOT(get_CachedName)
  KORVANE_UNUSED_SLOT(get_CachedAcceleratorKey)
  KORVANE_UNUSED_SLOT(get_CachedAccessKey)
  KORVANE_UNUSED_SLOT(get_CachedHasKeyboardFocus)
  KORVANE_UNUSED_SLOT(get_CachedIsKeyboardFocusable)
  KORVANE_UNUSED_SLOT(get_CachedIsEnabled)
  KORVANE_UNUSED_SLOT(get_CachedAutomationId)
  KORVANE_UNUSED_SLOT(get_CachedClassName)
  KORVANE_UNUSED_SLOT(get_CachedHelpText)
  KORVANE_UNUSED_SLOT(get_CachedCulture)
  KORVANE_UNUSED_SLOT(get_CachedIsControlElement)
  KORVANE_UNUSED_SLOT(get_CachedIsContentElement)
  KORVANE_UNUSED_SLOT(get_CachedIsPassword)
  KORVANE_UNUSED_SLOT(get_CachedNativeWindowHandle)
  KORVANE_UNUSED_SLOT(get_CachedItemType)
  KORVANE_UNUSED_SLOT(get_CachedIsOffscreen)
  KORVANE_UNUSED_SLOT(get_CachedOrientation)
  KORVANE_UNUSED_SLOT(get_CachedFrameworkId)
  KORVANE_UNUSED_SLOT(get_CachedIsRequiredForForm)
  KORVANE_UNUSED_SLOT(get_CachedItemStatus)
  KORVANE_UNUSED_SLOT(get_CachedBoundingRectangle)
  KORVANE_UNUSED_SLOT(get_CachedLabeledBy)
  KORVANE_UNUSED_SLOT(get_CachedAriaRole)
  KORVANE_UNUSED_SLOT(get_CachedAriaProperties)
  KORVANE_UNUSED_SLOT(get_CachedIsDataValidForForm)
  KORVANE_UNUSED_SLOT(get_CachedControllerFor)
  KORVANE_UNUSED_SLOT(get_CachedDescribedBy)
  KORVANE_UNUSED_SLOT(get_CachedFlowsTo)
  KORVANE_UNUSED_SLOT(get_CachedProviderDescription)
  virtual HRESULT STDMETHODCALLTYPE GetClickablePoint(POINT* point, BOOL* gotClickable) = 0;
};

struct IUIAutomation : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CompareElements(IUIAutomationElement* a, IUIAutomationElement* b, BOOL* same) = 0;
  KORVANE_UNUSED_SLOT(CompareRuntimeIds)
  KORVANE_UNUSED_SLOT(GetRootElement)
  virtual HRESULT STDMETHODCALLTYPE ElementFromHandle(UIA_HWND window, IUIAutomationElement** element) = 0;
  virtual HRESULT STDMETHODCALLTYPE ElementFromPoint(POINT point, IUIAutomationElement** element) = 0;
  KORVANE_UNUSED_SLOT(GetFocusedElement)
  KORVANE_UNUSED_SLOT(GetRootElementBuildCache)
  KORVANE_UNUSED_SLOT(ElementFromHandleBuildCache)
  KORVANE_UNUSED_SLOT(ElementFromPointBuildCache)
  KORVANE_UNUSED_SLOT(GetFocusedElementBuildCache)
  KORVANE_UNUSED_SLOT(CreateTreeWalker)
  virtual HRESULT STDMETHODCALLTYPE get_ControlViewWalker(IUIAutomationTreeWalker** walker) = 0;
  KORVANE_UNUSED_SLOT(get_ContentViewWalker)
  KORVANE_UNUSED_SLOT(get_RawViewWalker)
  KORVANE_UNUSED_SLOT(get_RawViewCondition)
  virtual HRESULT STDMETHODCALLTYPE get_ControlViewCondition(IUIAutomationCondition** condition) = 0;
  KORVANE_UNUSED_SLOT(get_ContentViewCondition)
  virtual HRESULT STDMETHODCALLTYPE CreateCacheRequest(IUIAutomationCacheRequest** request) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateTrueCondition(IUIAutomationCondition** condition) = 0;
  KORVANE_UNUSED_SLOT(CreateFalseCondition)
  virtual HRESULT STDMETHODCALLTYPE CreatePropertyCondition(PROPERTYID property, VARIANT value,
                                                            IUIAutomationCondition** condition) = 0;
  KORVANE_UNUSED_SLOT(CreatePropertyConditionEx)
  virtual HRESULT STDMETHODCALLTYPE CreateAndCondition(IUIAutomationCondition* a, IUIAutomationCondition* b,
                                                       IUIAutomationCondition** condition) = 0;
};

#undef KORVANE_UNUSED_SLOT
