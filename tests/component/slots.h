// Calling the slots of a dual interface with variants, as a compiled client would with its own types.
#pragma once

#include <concepts>
#include <cstring>
#include <string>
#include <string_view>
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
  if constexpr (std::is_integral_v<T>) return answer;
  VARIANT wrapped{};
  if constexpr (std::is_same_v<T, VARIANT>) {
    wrapped = answer;
  } else if constexpr (std::is_pointer_v<T>) {
    wrapped.vt = std::is_same_v<T, BSTR> ? VT_BSTR : std::is_same_v<T, IUnknown*> ? VT_UNKNOWN : VT_DISPATCH;
    wrapped.byref = answer;
  }
  return static_cast<Variant&&>(wrapped);
}

// A slot, by its name in the header; `call` puts what it hands over into `result`.
struct Slot {
  std::string interface, kind, member;  // "Root", "get", "Domaines"
  std::size_t place;                    // behind those of IDispatch
  HRESULT (*call)(IDispatch* object, const std::vector<Variant>& arguments, Variant& result);
};

template <auto kSlot, bool kHasResult, class Interface, class... Parameters>
Slot Described(HRESULT (Interface::*slot)(Parameters...)) {
  // Only here the compiler tells the slot's name.
  std::string name = __PRETTY_FUNCTION__;
  name.erase(0, name.find("::_", name.find("kSlot = ")) + 3);
  const std::size_t colons = name.find("::"), underscore = name.find('_');
  std::size_t offset = 0;  // in the table of slots, plus one
  std::memcpy(&offset, &slot, sizeof offset);
  auto call = [](IDispatch* object, const std::vector<Variant>& arguments, Variant& result) {
    return [&]<std::size_t... kAt>(std::index_sequence<kAt...>) {
      const auto target = ObjectPtr<Interface>::Query(object);
      [[maybe_unused]] std::vector<Passed> passed(arguments.begin(), arguments.end());
      if constexpr (kHasResult) {
        using Last = std::tuple_element_t<sizeof...(kAt), std::tuple<Parameters...>>;
        std::remove_pointer_t<Last> answer{};
        const HRESULT status = (target.get()->*kSlot)(passed.at(kAt)..., &answer);
        if (SUCCEEDED(status)) result = Wrapped(answer);
        return status;
      } else {
        return (target.get()->*kSlot)(passed.at(kAt)...);
      }
    }
    (std::make_index_sequence<sizeof...(Parameters) - (kHasResult ? 1 : 0)>());
  };
  return {name.substr(0, colons), name.substr(colons + 2, underscore - colons - 2),
          name.substr(underscore + 1, name.find_first_of(";]") - underscore - 1), offset / sizeof(void*) - 7,
          call};
}

}  // namespace moxel::test
