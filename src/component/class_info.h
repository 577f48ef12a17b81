// The description of a class's surface: one table from which names are looked up, calls are made and the
// class is registered. Members stand in the slot order of the class's dual interface.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "moxel/platform.h"

namespace moxel::component {

struct ValueType {
  VARTYPE tag = VT_EMPTY;             // VT_EMPTY: no value
  const IID* interface_id = nullptr;  // of an object of the component, whose tag is VT_DISPATCH
};

struct Parameter {
  std::u16string_view name;
  bool optional = false;
  ValueType type = {};
  bool by_reference = false;
};

// No member takes more.
constexpr std::size_t kMostParameters = 8;

// What a call by name can be; the values are those of the DISPATCH_ flags.
enum class MemberKind : WORD {
  kMethod = DISPATCH_METHOD,
  kGet = DISPATCH_PROPERTYGET,
  kPut = DISPATCH_PROPERTYPUT,
  kPutRef = DISPATCH_PROPERTYPUTREF,
};

// Calls a member's slot with one argument a parameter, coerced to the slot's types.
// AutomationError when an argument does not convert; `bad_argument` then is its position.
using Thunk = HRESULT (*)(IDispatch* object, std::span<const VARIANT* const> arguments, VARIANT* result,
                          std::size_t& bad_argument);

struct Member {
  MemberKind kind;
  std::u16string_view name;
  DISPID id;
  std::vector<Parameter> parameters;
  ValueType result;
  Thunk call;
  std::u16string_view help;
  bool hidden = false;
};

struct ClassInfo {
  std::u16string_view name;
  std::u16string_view interface_name;
  const CLSID* clsid;  // null for the plain collection, which is an interface without a class
  const IID* iid;
  std::u16string_view help;
  std::vector<Member> members;
};

}  // namespace moxel::component
