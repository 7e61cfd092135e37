// Owners of what the platform hands out: each gives its resource back exactly once, on every way out.
#pragma once

#include <utility>

#include "platform/uia.h"

namespace korvane {

// A handle or pointer that the function `GiveBack` takes back; the zero value is "none".
template <class Resource, auto GiveBack>
class Owned {
 public:
  Owned() = default;
  explicit Owned(Resource resource) : resource_(resource) {}
  Owned(Owned&& other) noexcept : resource_(other.Detach()) {}
  Owned& operator=(Owned&& other) noexcept {
    if (this != &other) {
      Reset();
      resource_ = other.Detach();
    }
    return *this;
  }
  ~Owned() {
    Reset();
  }

  Resource Get() const {
    return resource_;
  }
  explicit operator bool() const {
    return resource_ != Resource{};
  }

  // For out-parameters: what is held goes back first.
  Resource* Receive() {
    Reset();
    return &resource_;
  }
  Resource Detach() {
    return std::exchange(resource_, Resource{});
  }

 private:
  void Reset() {
    if (Resource resource = Detach(); resource != Resource{}) {
      GiveBack(resource);
    }
  }

  Resource resource_{};
};

using Bstr = Owned<BSTR, SysFreeString>;
using TaskText = Owned<WCHAR*, CoTaskMemFree>;
using GlobalBlock = Owned<HGLOBAL, GlobalFree>;
using KernelHandle = Owned<HANDLE, CloseHandle>;

// One counted reference to a COM object.
template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  // Shares: takes a reference of its own.
  explicit ComPtr(Interface* object) : object_(object) {
    if (object_ != nullptr) {
      object_->AddRef();
    }
  }
  // Takes over the caller's reference.
  static ComPtr Adopt(Interface* object) {
    ComPtr adopted;
    adopted.object_ = object;
    return adopted;
  }
  ComPtr(const ComPtr& other) : ComPtr(other.object_) {}
  ComPtr(ComPtr&& other) noexcept : object_(other.Detach()) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() {
    Reset();
  }

  Interface* Get() const {
    return object_;
  }
  Interface* operator->() const {
    return object_;
  }
  Interface& operator*() const {
    return *object_;
  }
  explicit operator bool() const {
    return object_ != nullptr;
  }

  // For out-parameters: what is held is released first.
  Interface** Receive() {
    Reset();
    return &object_;
  }
  Interface* Detach() {
    return std::exchange(object_, nullptr);
  }

 private:
  void Reset() {
    if (Interface* object = Detach()) {
      object->Release();
    }
  }

  Interface* object_ = nullptr;
};

using ElementPtr = ComPtr<IUIAutomationElement>;
using ElementArrayPtr = ComPtr<IUIAutomationElementArray>;
using ConditionPtr = ComPtr<IUIAutomationCondition>;
using WalkerPtr = ComPtr<IUIAutomationTreeWalker>;

// A VARIANT that is initialised from the start and cleared at the end.
class Variant {
 public:
  Variant() {
    VariantInit(&value_);
  }
  explicit Variant(LONG number) : Variant() {
    value_.vt = VT_I4;
    value_.lVal = number;
  }
  // Holds a null string when memory is out.
  explicit Variant(const WCHAR* text) : Variant() {
    value_.bstrVal = SysAllocString(text);
    value_.vt = VT_BSTR;
  }
  Variant(Variant&& other) noexcept : Variant() {
    std::swap(value_, other.value_);
  }
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() {
    VariantClear(&value_);
  }

  const VARIANT& Get() const {
    return value_;
  }
  // The string held, or null when it holds none.
  BSTR Text() const {
    return value_.vt == VT_BSTR ? value_.bstrVal : nullptr;
  }

  VARIANT* Receive() {
    VariantClear(&value_);
    return &value_;
  }

 private:
  VARIANT value_;
};

// A global memory block's bytes, for as long as it is locked; none of no block.
class GlobalView {
 public:
  explicit GlobalView(HGLOBAL block) : block_(block), bytes_(block != nullptr ? GlobalLock(block) : nullptr) {}
  ~GlobalView() {
    if (bytes_ != nullptr) {
      GlobalUnlock(block_);
    }
  }
  GlobalView(const GlobalView&) = delete;
  GlobalView& operator=(const GlobalView&) = delete;

  void* Bytes() const {
    return bytes_;
  }

 private:
  HGLOBAL block_;
  void* bytes_;
};

}  // namespace korvane
