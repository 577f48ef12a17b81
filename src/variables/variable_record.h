// Reading variables back from the registry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "moxel/object_ptr.h"
#include "variables/variable.h"
#include "variables/variables.h"

namespace moxel {

// Reads the records of one pass over an owner's variables. Its working values are not cleared between
// records: a step that fails leaves what the record before it had, and a real constant, whose initial value
// is not read at all, receives the initial value of the record before it (nothing for the first).
class VariableRecordReader {
 public:
  // A new variable filled from the key `name` below `variables_path`. What a setter refuses keeps its
  // default.
  ObjectPtr<Variable> Read(const std::u16string& variables_path, const std::u16string& name);

 private:
  Variant var_type_;
  std::int16_t data_type_ = MXVariableDataType_Alpha;
  Variant value_;
  Variant init_;
};

// Adds all variables of the owner at a path to its collection. Never fails: what cannot be read is passed
// over.
void LoadVariableRecords(std::u16string_view owner_path, Variables& variables);

}  // namespace moxel
