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

// What a slot's type is on the wire: its description, the member of a variant that holds it, and its making
// from a variant.
template <class T>
struct Wire;

template <>
struct Wire<SHORT> {
  static constexpr ValueType kType{VT_I2};
  static constexpr auto kMember = &VARIANT::iVal;
  static SHORT From(const Variant& value) { return value.ToI2(); }
};

template <>
struct Wire<LONG> {
  static constexpr ValueType kType{VT_I4};
  static constexpr auto kMember = &VARIANT::lVal;
  static LONG From(const Variant& value) { return value.ToI4(); }
};

template <>
struct Wire<BSTR> {
  static constexpr ValueType kType{VT_BSTR};
  static constexpr auto kMember = &VARIANT::bstrVal;
  static BSTR From(const Variant& value) { return Bstr(value.ToText()).Detach(); }
};

template <>
struct Wire<VARIANT> {
  static constexpr ValueType kType{VT_VARIANT};
  static VARIANT From(const Variant& value) { return Variant(value).Detach(); }
};

template <>
struct Wire<IUnknown*> {
  static constexpr ValueType kType{VT_UNKNOWN};
  static constexpr auto kMember = &VARIANT::punkVal;
};

template <std::derived_from<IDispatch> Interface>
struct Wire<Interface*> {
  static constexpr ValueType kType = [] {
    ValueType type{VT_DISPATCH};
    if constexpr (!std::same_as<Interface, IDispatch>) type.interface_id = &Interface::iid;
    return type;
  }();
  static constexpr auto kMember = &VARIANT::pdispVal;
  static Interface* From(const Variant& value) {
    if (value.vt != VT_DISPATCH) throw AutomationError::TypeMismatch();
    auto object = ObjectPtr<Interface>::Query(value.pdispVal);
    if (value.pdispVal && !object) throw AutomationError::TypeMismatch();
    return object.Detach();
  }
};

// Hands a value with all that it holds to a variant.
template <class T>
void Store(T value, VARIANT& target) {
  target.vt = Wire<T>::kType.tag;
  target.*Wire<T>::kMember = value;
}
inline void Store(VARIANT value, VARIANT& target) { target = value; }

// An argument coerced to the type of a slot's parameter, as the slot's callee may change it.
template <class T>
class Argument {
 public:
  explicit Argument(const Variant& given) : value_(Wire<T>::From(given)) {}
  Argument(Argument&& other) noexcept : value_(std::exchange(other.value_, T{})) {}
  Argument& operator=(Argument&&) = delete;
  ~Argument() { Take(); }

  T& get() { return value_; }
  Variant Take() {
    Variant taken;
    Store(std::exchange(value_, T{}), taken);
    return taken;
  }

 private:
  T value_;
};

template <class T>
bool SameContent(T a, T b) {
  return a == b;
}
inline bool SameContent(BSTR a, BSTR b) { return ViewOf(a) == ViewOf(b); }
inline bool SameContent(const VARIANT& a, const VARIANT& b) {
  return a.vt == b.vt && (a.vt == VT_BSTR ? ViewOf(a.bstrVal) == ViewOf(b.bstrVal) : a.llVal == b.llVal);
}

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
  static HRESULT Call(std::index_sequence<kAt...>, IDispatch* object,
                      [[maybe_unused]] std::span<const VARIANT* const> arguments,
                      [[maybe_unused]] VARIANT* result, [[maybe_unused]] std::size_t& bad_argument) {
    std::tuple<Holder<kAt>...> holders{Coerce<kAt>(*arguments[kAt], bad_argument)...};
    auto* target = static_cast<Object*>(object);
    HRESULT status = S_OK;
    if constexpr (kHasResult) {
      std::remove_pointer_t<At<kCount>> answer{};
      status = (target->*Slot)(Pass<At<kAt>>(std::get<kAt>(holders))..., &answer);
      if (SUCCEEDED(status)) Store(answer, *result);
    } else {
      status = (target->*Slot)(Pass<At<kAt>>(std::get<kAt>(holders))...);
    }
    if (SUCCEEDED(status)) (GiveBack<kAt>(std::get<kAt>(holders), *arguments[kAt], bad_argument), ...);
    return status;
  }

  // What the slot made of an argument by reference goes to the client's own variable, where it passed one.
  template <std::size_t kAt>
  static void GiveBack(Holder<kAt>& holder, const VARIANT& argument, std::size_t& bad_argument) {
    if constexpr (Passing<At<kAt>>::kByReference) {
      if (!(argument.vt & VT_BYREF)) return;
      Holder<kAt> passed(Incoming(argument).value());
      if (SameContent(holder.get(), passed.get())) return;
      bad_argument = kAt;
      WriteBack(argument, holder.Take());
    }
  }

  template <std::size_t kAt>
  static void Complete(std::vector<Parameter>& parameters) {
    parameters[kAt].type = Wire<typename Passing<At<kAt>>::Type>::kType;
    parameters[kAt].by_reference = Passing<At<kAt>>::kByReference;
  }

  static Member Describe(MemberKind kind, std::u16string_view name, DISPID id,
                         std::vector<Parameter> parameters, Traits traits) {
    static_assert(kCount <= kMostParameters);
    parameters.resize(kCount);
    [&]<std::size_t... kAt>(std::index_sequence<kAt...>) { (Complete<kAt>(parameters), ...); }
    (std::make_index_sequence<kCount>());
    ValueType result;
    if constexpr (kHasResult) result = Wire<std::remove_pointer_t<At<kCount>>>::kType;
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
