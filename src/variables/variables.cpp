#include "variables/variables.h"

#include "errors/handle_error.h"
#include "moxel/enumerations.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "variables/owner.h"

namespace moxel {
namespace {

Status DeleteBelow(std::u16string_view level, IDispatch* owner, const Variable& variable) {
  return RegDeleteKeyPath(schema::Path(level, KeyOf(owner), schema::kVar), variable.key);
}

}  // namespace

ObjectPtr<Variable> Variables::NewVariable(const std::u16string& wVar, const Variant& wVarType,
                                           std::int16_t wDataType, const Variant& wValue,
                                           const Variant& wInit, IDispatch* wObj) {
  // One message serves a missing name and one with parentheses.
  if (wVar.empty() || wVar.find_first_of(u"()") != std::u16string::npos)
    HandleError(lMXVariableError_VariableRequired, u"Variables:NewVariable");
  ObjectPtr<Variable> variable = Variable::Create();
  variable->key = wVar;
  variable->SetVarType(wVarType);
  variable->SetDataType(wDataType);
  variable->SetValue(wValue);
  variable->SetInit(wInit);
  variable->Validate(wObj);
  Add(*variable);
  return variable;
}

Status Variables::DeleteVariable(const Variable& wVariable, IDispatch* wObj) {
  Status deleted = VARIANT_FALSE;
  if (IsDomain(wObj)) deleted = DeleteBelow(schema::kDomain, wObj, wVariable);
  if (IsScenario(wObj)) deleted = DeleteBelow(schema::kScenarios, wObj, wVariable);
  return deleted;
}

}  // namespace moxel
