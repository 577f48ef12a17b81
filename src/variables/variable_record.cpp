#include "variables/variable_record.h"

#include "errors/attempt.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/scrambling.h"
#include "registry/store.h"

namespace moxel {

ObjectPtr<Variable> VariableRecordReader::Read(const std::u16string& variables_path,
                                               const std::u16string& name) {
  const std::u16string path = schema::Path(variables_path, name);
  var_type_ = RegReadValue(path, schema::kVarType);
  Attempt([&] { data_type_ = ReadNumberOrZero(path, schema::kType).ToI2(); });
  if (data_type_ == MXVariableDataType_Real) {
    value_ = RegReadRawValue(path, schema::kValue);
    if (var_type_.Equals(u"V")) init_ = RegReadRawValue(path, schema::kInit);
  } else {
    value_ = RegReadValue(path, schema::kValue);
    init_ = RegReadValue(path, schema::kInit);
  }
  if (data_type_ == MXVariableDataType_Password) {
    Attempt([&] { UnscrambleText(value_); });
    Attempt([&] { UnscrambleText(init_); });
  }
  ObjectPtr<Variable> variable = Variable::Create();
  variable->key = name;
  Attempt([&] { variable->SetDataType(data_type_); });
  Attempt([&] { variable->SetVarType(var_type_); });
  Attempt([&] { variable->SetValue(value_); });
  Attempt([&] { variable->SetInit(init_); });
  return variable;
}

void LoadVariableRecords(std::u16string_view owner_path, Variables& variables) {
  const std::u16string variables_path = schema::Path(owner_path, schema::kVar);
  VariableRecordReader reader;
  ForEachSubKey(variables_path, [&](const std::u16string& name) {
    ObjectPtr<Variable> variable = reader.Read(variables_path, name);
    Attempt([&] { variables.Add(*variable); });
  });
}

}  // namespace moxel
