#include "accessible_parts.h"

#include <oleacc.h>

namespace {

constexpr IID kAccessible = {0x618736E0, 0x3C3D, 0x11CF, {0x81, 0x0C, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr LONG kParts = 2;

void SetNumber(VARIANT* value, LONG number) {
  value->vt = VT_I4;
  value->lVal = number;
}

// One for the only window of its kind; never freed.
class Parts final : public IAccessible {
 public:
  HWND window = nullptr;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = iid == kAccessible || iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
    return *object == nullptr ? E_NOINTERFACE : S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return 2;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    return 1;
  }

  HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* count) override {
    *count = kParts;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT, IDispatch** child) override {
    *child = nullptr;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* name) override {
    *name = SysAllocString(child.lVal == 1 ? L"Left" : L"Right");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* role) override {
    SetNumber(role, child.lVal == 1 ? ROLE_SYSTEM_PUSHBUTTON : ROLE_SYSTEM_CHECKBUTTON);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* state) override {
    SetNumber(state, child.lVal == 1 ? STATE_SYSTEM_UNAVAILABLE : STATE_SYSTEM_CHECKED);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE accLocation(LONG* left, LONG* top, LONG* width, LONG* height, VARIANT child) override {
    RECT rect{};
    GetWindowRect(window, &rect);
    *width = (rect.right - rect.left) / kParts;
    *height = rect.bottom - rect.top;
    *left = rect.left + (child.lVal - 1) * *width;
    *top = rect.top;
    return S_OK;
  }

  // Nothing else is known of them.
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT, BSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT, BSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT, BSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR*, VARIANT, LONG*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT, BSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT, BSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE accSelect(LONG, VARIANT) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE accNavigate(LONG, VARIANT, VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE accHitTest(LONG, LONG, VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT, BSTR) override {
    return E_NOTIMPL;
  }
};

Parts theParts;

}  // namespace

LRESULT AnswerAccessible(HWND window, WPARAM wParam, LPARAM lParam) {
  if (static_cast<LONG>(lParam) != static_cast<LONG>(OBJID_CLIENT)) {
    return 0;
  }
  theParts.window = window;
  return LresultFromObject(kAccessible, wParam, &theParts);
}
