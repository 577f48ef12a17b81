// Builds the members of a surface table from the slots of a dual interface; types are deduced from the slot.
//
//   Get<&_Variable::get_Value>(u"Value", 0x68030002)
//   Function<&_Variable::raw_Initialize>(u"Initialize", 0x60030008, {{u"wObj"}})
#pragma once

#include <concepts>
#include <tuple>
#include <utility>

#include "component/boundary.h"
#include "component/class_info.h"
#include "moxel/interfaces.h"

namespace moxel::component {

// What may follow a member's name, id and parameters.
struct Traits {
  std::u16string_view help = {};
  bool hidden = false;
};

namespace detail {

template <class T>
struct TypeOf;
template <>
struct TypeOf<SHORT> {
  static constexpr VARTYPE value = VT_I2;
};
template <>
struct TypeOf<LONG> {
  static constexpr VARTYPE value = VT_I4;
};
template <>
struct TypeOf<BSTR> {
  static constexpr VARTYPE value = VT_BSTR;
};
template <>
struct TypeOf<VARIANT> {
  static constexpr VARTYPE value = VT_VARIANT;
};
template <>
struct TypeOf<IUnknown*> {
  static constexpr VARTYPE value = VT_UNKNOWN;
};
template <std::derived_from<IDispatch> Interface>
struct TypeOf<Interface*> {
  static constexpr VARTYPE value = VT_DISPATCH;
};

// An argument coerced to the type of a slot's parameter; by reference: a pointer to the coerced copy.
template <class T>
class Argument;

template <>
class Argument<SHORT> {
 public:
  explicit Argument(const Variant& value) : value_(value.ToI2()) {}
  SHORT& get() { return value_; }

 private:
  SHORT value_;
};

template <>
class Argument<LONG> {
 public:
  explicit Argument(const Variant& value) : value_(value.ToI4()) {}
  LONG& get() { return value_; }

 private:
  LONG value_;
};

template <>
class Argument<BSTR> {
 public:
  explicit Argument(const Variant& value) : owned_(value.ToText()), value_(owned_.get()) {}
  BSTR& get() { return value_; }

 private:
  Bstr owned_;
  BSTR value_;
};

template <>
class Argument<VARIANT> {
 public:
  explicit Argument(const Variant& value) : value_(value) {}
  VARIANT& get() { return value_; }

 private:
  Variant value_;
};

template <std::derived_from<IDispatch> Interface>
class Argument<Interface*> {
 public:
  explicit Argument(const Variant& value) {
    if (value.vt != VT_DISPATCH) throw AutomationError::TypeMismatch();
    if (!value.pdispVal) return;
    owned_ = ObjectPtr<Interface>::Query(value.pdispVal);
    if (!owned_) throw AutomationError::TypeMismatch();
    value_ = owned_.get();
  }
  Interface*& get() { return value_; }

 private:
  ObjectPtr<Interface> owned_;
  Interface* value_ = nullptr;
};

// A slot's parameter type apart into what it is and whether it is by reference. Interface pointers are
// values.
template <class T>
struct Passing {
  using Type = T;
  static constexpr bool kByReference = false;
};
template <class T>
struct Passing<T*> {
  using Type = T;
  static constexpr bool kByReference = true;
};
template <>
struct Passing<BSTR> {
  using Type = BSTR;
  static constexpr bool kByReference = false;
};
template <std::derived_from<IUnknown> Interface>
struct Passing<Interface*> {
  using Type = Interface*;
  static constexpr bool kByReference = false;
};

template <class T>
T Pass(Argument<typename Passing<T>::Type>& argument) {
  if constexpr (Passing<T>::kByReference)
    return &argument.get();
  else
    return argument.get();
}

// Wraps a slot's result, which the slot handed over, into a variant.
inline void Wrap(SHORT value, VARIANT* result) { *result = Variant(value).Detach(); }
inline void Wrap(LONG value, VARIANT* result) { *result = Variant(value).Detach(); }
inline void Wrap(VARIANT value, VARIANT* result) { *result = value; }
inline void Wrap(BSTR value, VARIANT* result) {
  result->vt = VT_BSTR;
  result->bstrVal = value;
}
inline void Wrap(IDispatch* value, VARIANT* result) {
  result->vt = VT_DISPATCH;
  result->pdispVal = value;
}
inline void Wrap(IUnknown* value, VARIANT* result) {
  result->vt = VT_UNKNOWN;
  result->punkVal = value;
}

template <class Slot>
struct SlotTypes;
template <class Interface, class... Arguments>
struct SlotTypes<HRESULT (Interface::*)(Arguments...)> {
  using Object = Interface;
  using List = std::tuple<Arguments...>;
};

// The call of one slot. The last argument takes the result where there is one.
template <auto Slot, bool kHasResult>
struct Caller {
  using Types = SlotTypes<decltype(Slot)>;
  using Object = typename Types::Object;
  using List = typename Types::List;
  static constexpr std::size_t kCount = std::tuple_size_v<List> - (kHasResult ? 1 : 0);
  template <std::size_t kAt>
  using At = std::tuple_element_t<kAt, List>;
  template <std::size_t kAt>
  using Holder = Argument<typename Passing<At<kAt>>::Type>;

  static HRESULT Call(IDispatch* object, std::span<const VARIANT* const> arguments, VARIANT* result,
                      std::size_t& bad_argument) {
    return Call(std::make_index_sequence<kCount>(), object, arguments, result, bad_argument);
  }

  // In order, so that the first argument that does not convert is the one reported.
  template <std::size_t kAt>
  static Holder<kAt> Coerce(const VARIANT& argument, std::size_t& bad_argument) {
    bad_argument = kAt;
    return Holder<kAt>(Incoming(argument).value());
  }

  template <std::size_t... kAt>
  static HRESULT Call(std::index_sequence<kAt...>, [[maybe_unused]] IDispatch* object,
                      [[maybe_unused]] std::span<const VARIANT* const> arguments,
                      [[maybe_unused]] VARIANT* result, [[maybe_unused]] std::size_t& bad_argument) {
    std::tuple<Holder<kAt>...> holders{Coerce<kAt>(*arguments[kAt], bad_argument)...};
    auto* target = static_cast<Object*>(object);
    if constexpr (kHasResult) {
      std::remove_pointer_t<At<kCount>> answer{};
      HRESULT status = (target->*Slot)(Pass<At<kAt>>(std::get<kAt>(holders))..., &answer);
      if (SUCCEEDED(status)) Wrap(answer, result);
      return status;
    } else {
      return (target->*Slot)(Pass<At<kAt>>(std::get<kAt>(holders))...);
    }
  }

  template <std::size_t kAt>
  static void Complete(std::vector<Parameter>& parameters) {
    parameters[kAt].type = TypeOf<typename Passing<At<kAt>>::Type>::value;
    parameters[kAt].by_reference = Passing<At<kAt>>::kByReference;
  }

  static Member Describe(MemberKind kind, std::u16string_view name, DISPID id,
                         std::vector<Parameter> parameters, Traits traits) {
    parameters.resize(kCount);
    [&]<std::size_t... kAt>(std::index_sequence<kAt...>) { (Complete<kAt>(parameters), ...); }
    (std::make_index_sequence<kCount>());
    VARTYPE result = VT_EMPTY;
    if constexpr (kHasResult) result = TypeOf<std::remove_pointer_t<At<kCount>>>::value;
    return {kind, name, id, std::move(parameters), result, &Caller::Call, traits.help, traits.hidden};
  }
};

}  // namespace detail

template <auto Slot>
Member Get(std::u16string_view name, DISPID id, std::vector<Parameter> parameters = {}, Traits traits = {}) {
  return detail::Caller<Slot, true>::Describe(MemberKind::kGet, name, id, std::move(parameters), traits);
}

// The value put is the last parameter.
template <auto Slot>
Member Put(std::u16string_view name, DISPID id, std::vector<Parameter> parameters = {}, Traits traits = {}) {
  return detail::Caller<Slot, false>::Describe(MemberKind::kPut, name, id, std::move(parameters), traits);
}

template <auto Slot>
Member PutRef(std::u16string_view name, DISPID id, std::vector<Parameter> parameters = {},
              Traits traits = {}) {
  return detail::Caller<Slot, false>::Describe(MemberKind::kPutRef, name, id, std::move(parameters), traits);
}

// A method with a result.
template <auto Slot>
Member Function(std::u16string_view name, DISPID id, std::vector<Parameter> parameters = {},
                Traits traits = {}) {
  return detail::Caller<Slot, true>::Describe(MemberKind::kMethod, name, id, std::move(parameters), traits);
}

// A method without a result.
template <auto Slot>
Member Method(std::u16string_view name, DISPID id, std::vector<Parameter> parameters = {},
              Traits traits = {}) {
  return detail::Caller<Slot, false>::Describe(MemberKind::kMethod, name, id, std::move(parameters), traits);
}

}  // namespace moxel::component
