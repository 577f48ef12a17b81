// The component's type library, read through its type information.
#pragma once

#include <string>
#include <vector>

#include "moxel/platform.h"

namespace moxel::tool {

struct TypeName {
  VARTYPE tag = VT_VOID;
  std::string interface_name;  // of an object of the library, whose tag is VT_USERDEFINED
  int references = 0;          // how often it is referred to: an object is so once already
};

struct TypeParameter {
  std::string name;  // empty for the value that a property is given
  TypeName type;
  USHORT flags = 0;
};

struct TypeMember {
  std::string name;
  std::string help;
  MEMBERID id = 0;
  INVOKEKIND kind = INVOKE_FUNC;
  bool hidden = false;
  std::vector<TypeParameter> parameters;
  TypeName result;
};

struct TypeInterface {
  std::string name;
  std::string help;
  std::string id;
  std::vector<TypeMember> members;  // in slot order
};

struct TypeClass {
  std::string name;
  std::string help;
  std::string id;
  bool creatable = false;
  std::string interface_name;
};

struct TypeConstant {
  std::string name;
  LONG value = 0;
};

struct TypeEnumeration {
  std::string name;
  std::string help;
  std::vector<TypeConstant> constants;
};

struct TypeModel {
  std::string name;
  std::string title;
  std::string id;
  WORD major_version = 0;
  WORD minor_version = 0;
  std::vector<TypeEnumeration> enumerations;
  std::vector<TypeInterface> interfaces;
  std::vector<TypeClass> classes;
};

// Throws AutomationError with what the type information answers.
TypeModel ReadTypeModel(ITypeLib* library);

}  // namespace moxel::tool
