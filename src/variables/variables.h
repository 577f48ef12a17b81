// The variables of one domain or scenario.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/interfaces.h"
#include "platform/automation/object_collection.h"
#include "registry/status.h"
#include "variables/variable.h"

namespace moxel {

class Variables : public ObjectCollection<Variable, _Variables> {
 public:
  // A new, empty collection.
  static ObjectPtr<Variables> Create();

  // Creates a variable of an owner, writes it and adds it. 1504, Source "Variables:NewVariable", for a name
  // that is empty or contains a parenthesis; then the setters' refusals; 1503, Source "Variable:Validate",
  // where the owner's registry key has the name. It is written before it is added: a name that only this
  // collection has (457) stays in the registry.
  ObjectPtr<Variable> NewVariable(const std::u16string& wVar, const Variant& wVarType, std::int16_t wDataType,
                                  const Variant& wValue, const Variant& wInit, IDispatch* wObj);

  // Deletes a variable's registry key below its owner; true when it is deleted, false when it was not there
  // or the object owns no variables. The collection stays as it is.
  Status DeleteVariable(const Variable& wVariable, IDispatch* wObj);
};

}  // namespace moxel
