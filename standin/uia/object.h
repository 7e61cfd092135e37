// The base of all UI Automation client objects here: it counts references, tells the tree when an object is made and
// destroyed, and lets no exception out of a method.
#pragma once

#include <atomic>
#include <new>

#include "platform/uia.h"
#include "standin/uia/tree.h"

namespace standin::uia {

// A client object with one reference, its maker's. Conditions, elements and requests that a client passes in are taken
// to be objects of this kind, as a client of one server can have no others.
template <class Interface>
class Object : public Interface {
 public:
  Object(Tree& tree, REFIID iid, const char* name) : tree_(tree), iid_(iid) {
    tree_.Made(this, name);
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  // Stands behind the interface's methods in the table of virtual functions, so that it moves none of them.
  virtual ~Object() {
    tree_.Destroyed(this);
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) final {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (iid != iid_ && iid != IID_IUnknown) {
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<Interface*>(this);
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() final {
    return ++references_;
  }

  ULONG STDMETHODCALLTYPE Release() final {
    const ULONG left = --references_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

 protected:
  Tree& tree_;

  // Runs the body of one client method after the tree has let it in.
  template <class Body>
  HRESULT Call(const char* method, Body body) noexcept try {
    const Visit visit(tree_);
    const HRESULT entered = tree_.Enter(method);
    return entered != S_OK ? entered : body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }

  // The same for a method that hands out `*out`, which is null whenever the method fails.
  template <class Out, class Body>
  HRESULT CallFor(const char* method, Out** out, Body body) noexcept {
    if (out != nullptr) {
      *out = nullptr;
    }
    return Call(method, [&]() -> HRESULT { return out == nullptr ? E_POINTER : body(); });
  }

 private:
  struct Visit {
    explicit Visit(Tree& visited) : tree(visited) {}
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit() {
      tree.Leave();
    }
    Tree& tree;
  };

  const IID iid_;
  std::atomic<ULONG> references_{1};
};

// A reference held by another client object.
template <class Class>
class Held {
 public:
  explicit Held(Class* object) : object_(object) {
    if (object_ != nullptr) {
      object_->AddRef();
    }
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() {
    if (object_ != nullptr) {
      object_->Release();
    }
  }

  Class* Get() const {
    return object_;
  }
  void Set(Class* object) {
    object->AddRef();
    if (object_ != nullptr) {
      object_->Release();
    }
    object_ = object;
  }

 private:
  Class* object_;
};

}  // namespace standin::uia
