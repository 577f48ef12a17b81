#include "root/root_var.h"

#include "errors/attempt.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "variables/variable_record.h"

namespace moxel {

ObjectPtr<Variable> RootVar::RecupVariable(const Variant& wDom, const Variant& wScen,
                                           const Variant& wVar) const {
  std::u16string base;
  Attempt([&] {
    base = wDom.Equals(u"") ? schema::Path(schema::kScenarios, wScen.ToText())
                            : schema::Path(schema::kDomain, wDom.ToText());
  });
  const std::u16string variables_path = schema::Path(base, schema::kVar);
  ObjectPtr<Variable> result;
  VariableRecordReader reader;
  ForEachSubKey(variables_path, [&](const std::u16string& name) {
    if (wVar.Equals(name)) result = reader.Read(variables_path, name);
  });
  return result;
}

}  // namespace moxel
