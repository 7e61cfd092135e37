// COM: initialisation per thread, the automation object, strings, variants and task memory.
#include <cstdlib>
#include <cstring>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr const char* kString = "BSTR";
constexpr const char* kTaskMemory = "task memory";

// A string as the platform lays it out: its length in bytes before it, a terminator behind it.
BSTR MakeString(Desktop::State& state, TextView text) {
  const std::size_t bytes = text.size() * sizeof(WCHAR);
  auto* block = static_cast<std::uint8_t*>(std::malloc(sizeof(std::uint32_t) + bytes + sizeof(WCHAR)));
  const auto length = static_cast<std::uint32_t>(bytes);
  std::memcpy(block, &length, sizeof length);
  std::memcpy(block + sizeof length, text.data(), bytes);
  std::memset(block + sizeof length + bytes, 0, sizeof(WCHAR));
  auto* const string = reinterpret_cast<BSTR>(block + sizeof length);
  state.Give(string, kString);
  return string;
}

void FreeString(Desktop::State& state, BSTR text) {
  if (text != nullptr && state.Take(text, kString)) {
    std::free(reinterpret_cast<std::uint8_t*>(text) - sizeof(std::uint32_t));
  }
}

}  // namespace

BSTR Desktop::State::NewString(uia::TextView text) {
  const std::lock_guard guard(mutex);
  return MakeString(*this, text);
}

// ---- Scripting ----

void Desktop::InitializeComMultithreaded() {
  const std::lock_guard guard(state_->mutex);
  state_->Self().comMultithreaded = true;
}

void Desktop::UninitializeCom() {
  const std::lock_guard guard(state_->mutex);
  state_->Self().comMultithreaded = false;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

HRESULT CoInitializeEx(LPVOID /*reserved*/, DWORD /*model*/) {
  STANDIN_CALL(CoInitializeEx);
  if (call.Fails()) {
    return call.Failure();
  }
  Thread& self = call->Self();
  if (self.comMultithreaded) {
    return RPC_E_CHANGED_MODE;
  }
  return ++self.comInitializations == 1 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  STANDIN_COUNTED_CALL(CoUninitialize);
  Thread& self = call->Self();
  if (self.comInitializations == 0) {
    call->Misuse("uninitialised COM on a thread without it");
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
  return clsid == CLSID_CUIAutomation ? uia::MakeAutomation(call.State(), iid, object) : kClassNotRegistered;
}

LPVOID CoTaskMemAlloc(SIZE_T size) {
  STANDIN_CALL(CoTaskMemAlloc);
  if (call.Fails()) {
    return nullptr;
  }
  void* block = std::malloc(size);
  call->Give(block, kTaskMemory);
  return block;
}

void CoTaskMemFree(LPVOID block) {
  STANDIN_COUNTED_CALL(CoTaskMemFree);
  if (block != nullptr && call->Take(block, kTaskMemory)) {
    std::free(block);
  }
}

BSTR SysAllocString(const WCHAR* text) {
  STANDIN_CALL(SysAllocString);
  return call.Fails() || text == nullptr ? nullptr : MakeString(call.State(), text);
}

void SysFreeString(BSTR text) {
  STANDIN_COUNTED_CALL(SysFreeString);
  FreeString(call.State(), text);
}

UINT SysStringLen(BSTR text) {
  STANDIN_COUNTED_CALL(SysStringLen);
  if (text == nullptr) {
    return 0;
  }
  std::uint32_t bytes = 0;
  std::memcpy(&bytes, reinterpret_cast<const std::uint8_t*>(text) - sizeof bytes, sizeof bytes);
  return bytes / static_cast<UINT>(sizeof(WCHAR));
}

void VariantInit(VARIANT* value) {
  STANDIN_COUNTED_CALL(VariantInit);
  std::memset(static_cast<void*>(value), 0, sizeof *value);
}

HRESULT VariantClear(VARIANT* value) {
  STANDIN_CALL(VariantClear);
  if (value->vt == VT_BSTR) {
    FreeString(call.State(), value->bstrVal);
  } else if (value->vt == VT_UNKNOWN && value->punkVal != nullptr) {
    value->punkVal->Release();
  }
  std::memset(static_cast<void*>(value), 0, sizeof *value);
  return call.Fails() ? call.Failure() : S_OK;
}

}  // extern "C"
