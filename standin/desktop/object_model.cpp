// COM: initialisation per thread, and the one class that can be made.
#include "standin/desktop/state.h"

namespace standin {

void Host::InitializeComMultithreaded() {
  const std::lock_guard guard(state_->mutex);
  state_->Self().comOfHost = true;
}

void Host::UninitializeCom() {
  const std::lock_guard guard(state_->mutex);
  state_->Self().comOfHost = false;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

HRESULT CoInitializeEx(LPVOID /*reserved*/, DWORD model) {
  constexpr DWORD kMultithreaded = 0;
  STANDIN_CALL(CoInitializeEx);
  if (call.Fails()) {
    return call.Failure();
  }
  Thread& self = call->Self();
  const bool isInitialized = self.comInitializations > 0 || self.comOfHost;
  const DWORD current = self.comInitializations > 0 ? self.comModel : kMultithreaded;
  const DWORD wanted = model & COINIT_APARTMENTTHREADED;
  if (isInitialized && wanted != current) {
    return RPC_E_CHANGED_MODE;
  }
  self.comModel = wanted;
  ++self.comInitializations;
  return isInitialized ? S_FALSE : S_OK;
}

void CoUninitialize() {
  STANDIN_COUNTED_CALL(CoUninitialize);
  Thread& self = call->Self();
  if (self.comInitializations == 0) {
    call->Misuse("uninitialised COM on a thread that had not initialised it");
    return;
  }
  --self.comInitializations;
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* /*outer*/, DWORD /*context*/, REFIID iid, LPVOID* object) {
  constexpr HRESULT kClassNotRegistered = static_cast<HRESULT>(0x80040154);
  STANDIN_CALL(CoCreateInstance);
  *object = nullptr;
  if (call.Fails()) {
    return call.Failure();
  }
  return clsid == CLSID_CUIAutomation ? uia::MakeAutomation(*call, iid, object) : kClassNotRegistered;
}

}  // extern "C"
