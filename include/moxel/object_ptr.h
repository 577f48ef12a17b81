// The one smart pointer of reference-counted objects.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "moxel/identifiers.h"

namespace moxel {

// Holds one reference to an object, or none.
template <class T>
class ObjectPtr {
 public:
  ObjectPtr() = default;
  ObjectPtr(std::nullptr_t) {}
  // Takes a reference of its own.
  explicit ObjectPtr(T* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  ObjectPtr(const ObjectPtr& other) : ObjectPtr(other.object_) {}
  ObjectPtr(ObjectPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  ObjectPtr(const ObjectPtr<U>& other) : ObjectPtr(static_cast<T*>(other.get())) {}
  ~ObjectPtr() {
    if (object_) object_->Release();
  }

  ObjectPtr& operator=(ObjectPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // Takes over a reference that the caller owns.
  static ObjectPtr Adopt(T* object) {
    ObjectPtr adopted;
    adopted.object_ = object;
    return adopted;
  }

  // The object's interface `T`, or nothing where it has none.
  static ObjectPtr Query(IUnknown* object) {
    void* found = nullptr;
    if (!object || FAILED(object->QueryInterface(interface_id<T>, &found))) return {};
    return Adopt(static_cast<T*>(found));
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

  // Hands the reference to the caller.
  T* Detach() { return std::exchange(object_, nullptr); }
  // Where a call puts a reference that it hands over.
  T** Receive() {
    *this = nullptr;
    return &object_;
  }
  void** ReceiveAny() { return reinterpret_cast<void**>(Receive()); }

 private:
  T* object_ = nullptr;
};

}  // namespace moxel
