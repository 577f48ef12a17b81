#include "root/root_var.h"

#include "errors/attempt.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "variables/variable_record.h"

namespace moxel {

ObjectPtr<Variable> RootVar::RecupVariable(const Variant& wDom, const Variant& wScen,
                                           const Variant& wVar) const {
  std::u16string base;
  Attempt([&] {
    base = wDom.Equals(u"") ? schema::Below(schema::kScenarios, wScen.ToText())
                            : schema::Below(schema::kDomain, wDom.ToText());
  });
  const std::u16string variables_path = schema::Below(base, schema::kVar);
  StoreHandle variables = 0;
  if (!RegOpenKeyPath(variables_path, variables, KEY_ENUMERATE_SUB_KEYS)) return nullptr;
  ObjectPtr<Variable> result;
  VariableRecordReader reader;
  std::u16string name;
  for (std::int32_t index = 0; RegEnumSubKeys(variables, index, name); ++index)
    if (wVar.Equals(name)) result = reader.Read(variables_path, name);
  RegCloseKeyHandle(variables);
  return result;
}

}  // namespace moxel
