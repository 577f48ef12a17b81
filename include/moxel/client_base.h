// What the wrappers of the C++ client share: arguments, calls, names and collections. Programs include
// moxel/client.h.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "moxel/automation_error.h"
#include "moxel/bstr.h"
#include "moxel/component.h"
#include "moxel/late_bound.h"
#include "moxel/object_ptr.h"
#include "moxel/text.h"
#include "moxel/variant.h"

namespace moxel::client {

template <class T>
concept Utf8Text = std::convertible_to<T, std::string_view> && !std::same_as<T, std::nullptr_t>;
template <class T>
concept Utf16Text = std::convertible_to<T, std::u16string_view> && !std::same_as<T, std::nullptr_t>;

// A text argument: any text of the standard library or literal, UTF-8 or UTF-16.
class Text {
 public:
  template <Utf8Text T>
  Text(const T& utf8) : text_(FromUtf8(utf8)) {}
  template <Utf16Text T>
  Text(const T& utf16) : text_(utf16) {}

  BSTR get() const { return text_.get(); }

 private:
  Bstr text_;
};

// A variant argument: a text as above, a number, a bool, any moxel::Variant, or {} for nothing. Where an
// element of a collection is meant, a number is its position, counted from 1, and a text its key, letter case
// ignored.
class Argument : public Variant {
 public:
  using Variant::Variant;
  Argument() = default;
  Argument(Variant value) : Variant(std::move(value)) {}
  template <Utf8Text T>
  Argument(const T& utf8) : Variant(FromUtf8(utf8)) {}
};

template <class I>
class Object;

namespace detail {

template <class T>
concept Number = std::integral<T> || std::is_enum_v<T>;

// What crosses the interface for an argument.
inline VARIANT Raw(const Variant& value) { return value; }
inline BSTR Raw(const Text& text) { return text.get(); }
template <class I>
I* Raw(const Object<I>& object) {
  return object.get();
}
template <Number T>
SHORT Raw(T number) {
  return static_cast<SHORT>(number);
}
template <class T>
T* Raw(T* result) {
  return result;
}

// An argument as its slot takes it, by value or by reference. The component does not change what it is passed
// by reference.
template <class T>
struct Passed {
  T value;
  operator T() const { return value; }
  operator T*() { return &value; }
};
template <class T>
Passed(T) -> Passed<T>;

// A value of a collection as an element of it. Throws TypeMismatch for an object of another class.
template <class Element>
Element ElementFrom(const Variant& value) {
  if constexpr (std::same_as<Element, Variant>) {
    return value;
  } else {
    using Interface = typename Element::Interface;
    auto object = ObjectPtr<Interface>::Query(value.vt == VT_DISPATCH ? value.pdispVal : nullptr);
    if (!object) throw AutomationError::TypeMismatch();
    return Element(std::move(object));
  }
}

// A new object of one of the two creatable classes, from the component that the program is linked with.
template <class I>
ObjectPtr<I> Create(REFCLSID class_id) {
  SetErrorInfo(0, nullptr);
  ObjectPtr<IClassFactory> factory;
  ThrowIfFailed(DllGetClassObject(class_id, IID_IClassFactory, factory.ReceiveAny()));
  ObjectPtr<I> object;
  ThrowIfFailed(factory->CreateInstance(nullptr, interface_id<I>, object.ReceiveAny()));
  return object;
}

}  // namespace detail

// What every wrapper is: holder of one object, or none.
template <class I>
class Object {
 public:
  using Interface = I;

  Object() = default;
  Object(std::nullptr_t) {}
  explicit Object(ObjectPtr<I> object) : object_(std::move(object)) {}

  explicit operator bool() const { return get() != nullptr; }
  // The interface, for calls of one's own; it stays with the wrapper.
  I* get() const { return object_.get(); }

  friend bool operator==(const Object& a, const Object& b) { return a.get() == b.get(); }

 protected:
  // Calls a slot; throws what it fails with.
  template <class Slot, class... Arguments>
  void Call(Slot slot, const Arguments&... arguments) const {
    if (!object_) throw AutomationError(E_POINTER, u"MOXEL", u"No object");
    // What an earlier call left must not describe a failure of this one.
    SetErrorInfo(0, nullptr);
    ThrowIfFailed((get()->*slot)(detail::Passed{detail::Raw(arguments)}...));
  }

  // The same for a slot with a result.
  template <class Result, class Slot, class... Arguments>
  Result Ask(Slot slot, const Arguments&... arguments) const {
    if constexpr (std::same_as<Result, Variant>) {
      Variant value;
      Call(slot, arguments..., &value);
      return value;
    } else if constexpr (std::same_as<Result, Bstr>) {
      Bstr text;
      Call(slot, arguments..., text.Receive());
      return text;
    } else if constexpr (requires { typename Result::Interface; }) {
      ObjectPtr<typename Result::Interface> object;
      Call(slot, arguments..., object.Receive());
      return Result(std::move(object));
    } else {
      std::conditional_t<std::same_as<Result, std::int32_t>, LONG, SHORT> number = 0;
      Call(slot, arguments..., &number);
      return static_cast<Result>(number);
    }
  }

 private:
  ObjectPtr<I> object_;
};

// An object with a name, which is its key in collections and the name of its registry key.
template <class I>
class Named : public Object<I> {
 public:
  using Object<I>::Object;

  std::string key() const { return ToUtf8(Key().view()); }
  std::u16string key16() const { return std::u16string(Key().view()); }
  // Neither the registry nor the collections that hold the object follow.
  void PutKey(const Text& value) const { this->Call(&I::put_key, value); }

 private:
  Bstr Key() const { return this->template Ask<Bstr>(&I::get_key); }
};

// A walk over a collection, once and in order: an input iterator that ends at std::default_sentinel. It keeps
// its collection alive and goes on over what is there when elements are added or removed meanwhile.
template <class Element>
class Iterator {
 public:
  using value_type = Element;
  using difference_type = std::ptrdiff_t;

  explicit Iterator(ObjectPtr<IEnumVARIANT> enumerator) : position_(std::move(enumerator)) {}

  Element operator*() const { return detail::ElementFrom<Element>(*position_); }
  Iterator& operator++() {
    ++position_;
    return *this;
  }
  void operator++(int) { ++position_; }
  bool operator==(std::default_sentinel_t end) const { return position_ == end; }

 private:
  ElementIterator position_;
};

// What every collection is: elements in the order added, and a std::ranges::input_range of them.
template <class I, class Element>
class CollectionOf : public Object<I> {
 public:
  using Object<I>::Object;

  std::int32_t Count() const { return this->template Ask<std::int32_t>(&I::get_Count); }

  // The element at a position or under a key. Throws 5 for an unknown key, 9 for a position out of range.
  Element Item(const Argument& vntIndexKey) const {
    return this->template Ask<Element>(&I::get_Item, vntIndexKey);
  }
  Element operator[](const Argument& vntIndexKey) const { return Item(vntIndexKey); }

  // Whether there is an element at a position or under a key.
  bool Contains(const Argument& vntIndexKey) const {
    try {
      Item(vntIndexKey);
      return true;
    } catch (const AutomationError& error) {
      if (error.number() != AutomationError::InvalidProcedureCall().number() &&
          error.number() != AutomationError::SubscriptOutOfRange().number())
        throw;
      return false;
    }
  }

  // Files an object under its key, at the end. Throws 457 when the key is there already.
  void Add(const Element& element) const { this->Call(&I::raw_Add, element); }

  // Takes an element out of the collection. Throws as Item does.
  void Remove(const Argument& vntIndexKey) const { this->Call(&I::raw_Remove, vntIndexKey); }

  ObjectPtr<IEnumVARIANT> NewEnum() const {
    ObjectPtr<IUnknown> answer;
    this->Call(&I::get_NewEnum, answer.Receive());
    auto enumerator = ObjectPtr<IEnumVARIANT>::Query(answer.get());
    if (!enumerator) throw AutomationError::TypeMismatch();
    return enumerator;
  }
  Iterator<Element> begin() const { return Iterator<Element>(NewEnum()); }
  std::default_sentinel_t end() const { return {}; }
};

}  // namespace moxel::client
