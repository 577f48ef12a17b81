// Calling the slots of a dual interface with variants, as a compiled client would with its own types.
#pragma once

#include <concepts>
#include <cstring>
#include <regex>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"

namespace moxel::test {

// One argument, by value or by reference as the slot has it.
class Passed {
 public:
  explicit Passed(const Variant& given) : value_(given) {}

  operator SHORT() { return value_.iVal; }
  operator SHORT*() { return &value_.iVal; }
  operator BSTR() { return value_.bstrVal; }
  operator BSTR*() { return &value_.bstrVal; }
  operator VARIANT() { return value_; }
  operator VARIANT*() { return &value_; }
  template <std::derived_from<IDispatch> Interface>
  operator Interface*() {
    return ObjectPtr<Interface>::Query(value_.pdispVal).get();  // the variant keeps it
  }
  template <std::derived_from<IDispatch> Interface>
  operator Interface**() {
    face_ = static_cast<Interface*>(*this);
    return reinterpret_cast<Interface**>(&face_);
  }

 private:
  Variant value_;
  void* face_ = nullptr;
};

// What a slot hands over, as the variant that owns it.
template <class T>
Variant Wrapped(T& answer) {
  Variant wrapped;
  if constexpr (std::is_same_v<T, VARIANT>) {
    static_cast<VARIANT&>(wrapped) = answer;
  } else if constexpr (std::is_same_v<T, BSTR>) {
    wrapped.vt = VT_BSTR;
    wrapped.bstrVal = answer;
  } else if constexpr (std::is_pointer_v<T>) {
    wrapped.vt = std::is_same_v<T, IUnknown*> ? VT_UNKNOWN : VT_DISPATCH;
    wrapped.punkVal = answer;
  } else {
    wrapped = answer;
  }
  return wrapped;
}

// A slot, by the name it has in its interface; `call` puts what it hands over into `result`.
struct Slot {
  std::string interface, kind, member;  // "Root", "get", "Domaines"
  std::size_t place;                    // behind those of IDispatch
  IID answer;                           // the interface of the object it answers or is given; else its own
  HRESULT (*call)(IDispatch* object, const std::vector<Variant>& arguments, Variant& result);
};

template <class Interface, class... Parameters>
constexpr std::size_t ParametersOf(HRESULT (Interface::*)(Parameters...)) {
  return sizeof...(Parameters);
}

template <auto kSlot, bool kHasResult, class Interface, class... Parameters, std::size_t... kAt>
Slot Described(HRESULT (Interface::*slot)(Parameters...), std::index_sequence<kAt...>) {
  using Last = std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>;
  using Answer = std::remove_pointer_t<std::conditional_t<kHasResult, std::remove_pointer_t<Last>, Last>>;
  Slot described{};
  described.call = [](IDispatch* object, const std::vector<Variant>& arguments, Variant& result) {
    const auto target = ObjectPtr<Interface>::Query(object);
    [[maybe_unused]] std::vector<Passed> passed(arguments.begin(), arguments.end());
    if constexpr (kHasResult) {
      std::remove_pointer_t<Last> answer{};
      const HRESULT status = (target.get()->*kSlot)(passed.at(kAt)..., &answer);
      if (SUCCEEDED(status)) result = Wrapped(answer);
      return status;
    } else {
      return (target.get()->*kSlot)(passed.at(kAt)...);
    }
  };
  described.answer =
      interface_id<std::conditional_t<std::derived_from<Answer, IDispatch>, Answer, Interface>>;
  std::memcpy(&described.place, &slot, sizeof described.place);  // its offset in the table, plus one
  described.place = described.place / sizeof(void*) - 7;
  // Only here the compiler tells the slot's name.
  const std::string spelled = __PRETTY_FUNCTION__;
  std::smatch found;
  std::regex_search(spelled, found, std::regex("kSlot = &moxel::_(\\w+)::(get|putref|put|raw)_(\\w+)"));
  described.interface = found.str(1);
  described.kind = found.str(2);
  described.member = found.str(3);
  return described;
}

}  // namespace moxel::test
