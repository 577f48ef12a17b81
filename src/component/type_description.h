// The types of the type library in the form in which type information hands them out, made from the surface
// tables and the table of enumerations.
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "component/class_info.h"
#include "moxel/variant.h"

namespace moxel::component {

struct FunctionDescription {
  FUNCDESC record{};
  std::vector<std::u16string_view> names;  // the member's, then those of its parameters
  std::u16string_view help;
  std::vector<ELEMDESC> parameters;
  std::vector<std::unique_ptr<TYPEDESC>> targets;  // what the pointers among its types refer to
};

struct ConstantDescription {
  VARDESC record{};
  std::u16string_view name;
  Variant value;
};

struct TypeDescription {
  TYPEATTR attributes{};
  std::u16string_view name;
  std::u16string_view help;
  const ClassInfo* info = nullptr;  // null for an enumeration
  std::vector<FunctionDescription> functions;
  std::vector<ConstantDescription> constants;
  std::vector<HREFTYPE> implemented;
  std::optional<HREFTYPE> other_view;  // of a dual interface: by name for its slots, and the other way round
};

// A reference to a type is its place in the list. The published types come first: the enumerations, the
// interfaces as they are called by name, the classes. Behind them stand the interfaces as their slots are,
// and the platform's own two that they derive from, which are named but not described.
struct TypeDescriptions {
  std::vector<TypeDescription> types;
  std::size_t published;
};

TypeDescriptions DescribeTypes();

}  // namespace moxel::component
