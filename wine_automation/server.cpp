// The in-process COM server of the UI Automation client object over real windows.
#include "wine_automation/window_tree.h"

namespace {

wine_automation::WindowTree theTree;
std::atomic<long> locks{0};

// One for the life of the module; references to it only keep the module loaded.
class AutomationFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (iid != IID_IClassFactory && iid != IID_IUnknown) {
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(++locks);
  }

  ULONG STDMETHODCALLTYPE Release() override {
    return static_cast<ULONG>(--locks);
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    return outer == nullptr ? standin::uia::MakeAutomation(theTree, iid, object) : CLASS_E_NOAGGREGATION;
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    locks += lock ? 1 : -1;
    return S_OK;
  }
};

AutomationFactory theFactory;

}  // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  return clsid == CLSID_CUIAutomation ? theFactory.QueryInterface(iid, object) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
  return locks == 0 && theTree.Objects() == 0 ? S_OK : S_FALSE;
}
