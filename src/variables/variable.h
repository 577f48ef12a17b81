// One named, typed value of a domain or a scenario.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "moxel/enumerations.h"
#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"
#include "registry/status.h"

namespace moxel {

// A variable, whose value is reset to its initial value when its owner is initialized, or a constant, whose
// value only changes explicitly. It does not know its owner: the members that need one take it. Clients read
// it and change it through Update and Initialize; the setters are for the component's own classes.
class Variable : public _Variable {
 public:
  // A new, empty variable.
  static ObjectPtr<Variable> Create();

  // Its name, its key in collections and the name of its registry key. Assigning it has no other effect.
  std::u16string key;

  std::int16_t DataType() const { return data_type_; }
  const Variant& Init() const { return init_; }
  const Variant& Value() const { return value_; }
  const Variant& VarType() const { return var_type_; }

  // Sets kind, data type, value and initial value and writes all four under the owner (a domain or a
  // scenario; under the product's root for anything else). Always true. A setter's refusal comes before
  // anything is written, a number that does not convert (6, 13) after the writes that precede it; what was
  // set in memory by then stays set.
  Status Update(const Variant& wVarType, std::int16_t wDataType, const Variant& wValue, const Variant& wInit,
                IDispatch* wObj);
  // The same; `wDomScen`, when given, names the owner instead: a domain's name followed by "_d" or a
  // scenario's by "_s".
  Status Update1(const Variant& wVarType, std::int16_t wDataType, const Variant& wValue, const Variant& wInit,
                 IDispatch* wObj, const Variant& wDomScen);

  // Resets a variable to its initial value and writes "Value"; does nothing to a constant. Always true.
  // Any failure is reported as 1507, Source "Variable:Initialize"; the value in memory may be reset by then.
  Status Initialize(IDispatch* wObj);
  // The same for the owner at a path of the tree, without a trailing backslash.
  Status Initialize1(const Variant& wKey);

  // Writes a copy under another name of an owner. Always true. 1503, Source "Variable:Duplicate", where the
  // name exists.
  Status Duplicate(const Variant& wVarName, IDispatch* wObj);

  // Stores a data type. 1501, Source "Variable:DataType Property Let", for an unknown one (5 is unknown).
  void SetDataType(std::int16_t wDataType);
  // Stores an initial value, which only a variable's data type restricts.
  // 1506 or 1505 (nothing for a Boolean), Source "Variable:Init Property Let".
  void SetInit(const Variant& wInit);
  // Writes this variable as a new key of its owner. Always true. 1503, Source "Variable:Validate", where the
  // name exists.
  Status Validate(IDispatch* wObj);
  // Stores a kind, "V" or "C". 1500, Source "Variable:VarType Property Let", for anything else.
  void SetVarType(const Variant& wVarType);
  // Stores a value that the data type accepts. 1502, Source "Variable:Value Property Let".
  void SetValue(const Variant& wValue);
  // Writes the four values of a record under a path; nothing for an unknown data type. Error 6 or 13 for a
  // number that does not convert, after the writes that precede it.
  static void WriteVariable(std::u16string_view wPath, const Variant& wVarType, std::int16_t wDataType,
                            const Variant& wValue, const Variant& wInit);

 private:
  Status UpdateUnder(const std::u16string& owner_path, const Variant& var_type, std::int16_t data_type,
                     const Variant& value, const Variant& init);
  void ResetUnder(const std::u16string& owner_path);
  Status WriteAsNew(const std::u16string& path, std::u16string_view source) const;

  std::int16_t data_type_ = MXVariableDataType_Alpha;
  Variant init_;
  Variant value_;
  Variant var_type_;
};

}  // namespace moxel
