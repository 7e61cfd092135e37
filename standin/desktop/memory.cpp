// Memory that changes hands: global blocks, task memory, strings and variants. Each block is a heap block of exactly
// its size, so that a sanitizer sees the first byte beyond it.
#include <cstdlib>
#include <cstring>
#include <new>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr const char* kString = "BSTR";
constexpr const char* kTaskMemory = "task memory";
// New memory is filled with this, so that code that expects zeros fails.
constexpr int kFresh = 0xCD;

// The length in bytes lies before the text, a terminator behind it.
BSTR MakeString(State& state, TextView text) {
  const auto bytes = static_cast<std::uint32_t>(text.size() * sizeof(WCHAR));
  auto* const block = static_cast<std::uint8_t*>(std::calloc(1, sizeof bytes + bytes + sizeof(WCHAR)));
  if (block == nullptr) {
    return nullptr;
  }
  std::memcpy(block, &bytes, sizeof bytes);
  std::memcpy(block + sizeof bytes, text.data(), bytes);
  const auto string = reinterpret_cast<BSTR>(block + sizeof bytes);
  state.Give(string, kString);
  return string;
}

void FreeString(State& state, BSTR text) {
  if (text != nullptr && state.Take(text, kString)) {
    std::free(reinterpret_cast<std::uint8_t*>(text) - sizeof(std::uint32_t));
  }
}

}  // namespace

BSTR State::NewString(uia::TextView text) {
  // The library does not call this, so it is not part of the sequence of calls. It can fail by its name alone.
  static CallSite site("NewString");
  const std::lock_guard guard(mutex);
  ++site.count;
  return FailsByName(site) ? nullptr : MakeString(*this, text);
}

HGLOBAL State::Allocate(SIZE_T size) {
  const auto block = reinterpret_cast<HGLOBAL>(nextGlobal += 16);
  GlobalMemory& memory = globals[block];
  memory.bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size);
  memory.size = size;
  std::memset(memory.bytes.get(), kFresh, size);
  return block;
}

LPVOID State::AllocateForTask(SIZE_T size) {
  void* const block = std::malloc(size);
  if (block != nullptr) {
    std::memset(block, kFresh, size);
    Give(block, kTaskMemory);
  }
  return block;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size) {
  STANDIN_CALL(GlobalAlloc);
  // More than any machine has.
  constexpr SIZE_T kLargest = SIZE_T{1} << 40;
  if (call.Fails() || size > kLargest) {
    return nullptr;
  }
  const HGLOBAL block = call->Allocate(size);
  call->globals.at(block).isMovable = (flags & GMEM_MOVEABLE) != 0;
  return block;
}

LPVOID GlobalLock(HGLOBAL block) {
  STANDIN_CALL(GlobalLock);
  const auto memory = call->globals.find(block);
  if (call.Fails() || memory == call->globals.end()) {
    return nullptr;
  }
  if (memory->second.systemOwned && call->clipboardThread != call->Self().id) {
    call->Misuse("locked a block of the clipboard without holding the clipboard");
    return nullptr;
  }
  ++memory->second.locks;
  memory->second.isHandedOut = true;
  return memory->second.bytes.get();
}

BOOL GlobalUnlock(HGLOBAL block) {
  STANDIN_CALL(GlobalUnlock);
  const auto memory = call->globals.find(block);
  if (memory == call->globals.end() || memory->second.locks == 0) {
    call->Misuse("unlocked global memory that was not locked");
    return FALSE;
  }
  // Zero stands for "no longer locked" as well as for a failure.
  return --memory->second.locks > 0 && !call.Fails();
}

HGLOBAL GlobalFree(HGLOBAL block) {
  STANDIN_CALL(GlobalFree);
  const auto memory = call->globals.find(block);
  if (memory == call->globals.end() || memory->second.systemOwned) {
    call->Misuse("freed global memory that is not the caller's");
    return block;
  }
  call->globals.erase(memory);
  return call.Fails() ? block : nullptr;
}

LPVOID CoTaskMemAlloc(SIZE_T size) {
  STANDIN_CALL(CoTaskMemAlloc);
  return call.Fails() ? nullptr : call->AllocateForTask(size);
}

void CoTaskMemFree(LPVOID block) {
  STANDIN_COUNTED_CALL(CoTaskMemFree);
  if (block != nullptr && call->Take(block, kTaskMemory)) {
    std::free(block);
  }
}

BSTR SysAllocString(const WCHAR* text) {
  STANDIN_CALL(SysAllocString);
  return call.Fails() || text == nullptr ? nullptr : MakeString(*call, text);
}

void SysFreeString(BSTR text) {
  STANDIN_COUNTED_CALL(SysFreeString);
  FreeString(*call, text);
}

UINT SysStringLen(BSTR text) {
  STANDIN_COUNTED_CALL(SysStringLen);
  std::uint32_t bytes = 0;
  if (text != nullptr) {
    std::memcpy(&bytes, reinterpret_cast<const std::uint8_t*>(text) - sizeof bytes, sizeof bytes);
  }
  return bytes / static_cast<UINT>(sizeof(WCHAR));
}

void VariantInit(VARIANT* value) {
  STANDIN_COUNTED_CALL(VariantInit);
  *value = VARIANT{};
}

HRESULT VariantClear(VARIANT* value) {
  STANDIN_CALL(VariantClear);
  const VARIANT held = std::exchange(*value, VARIANT{});
  if (held.vt == VT_BSTR) {
    FreeString(*call, held.bstrVal);
  } else if (held.vt == VT_UNKNOWN && held.punkVal != nullptr) {
    held.punkVal->Release();
  }
  return call.Fails() ? call.Failure() : S_OK;
}

}  // extern "C"
