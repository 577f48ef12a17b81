#include "domains/domaine.h"

#include "errors/handle_error.h"
#include "moxel/enumerations.h"
#include "registry/enumeration.h"
#include "registry/schema.h"
#include "registry/store.h"
#include "scenarios/scenario_record.h"
#include "variables/variable_record.h"

namespace moxel {

std::u16string Domaine::Path() const { return schema::Path(schema::kDomain, key); }

Status Domaine::Initialize(std::int16_t wWithOutDomVar, std::int16_t wWithOutScenVar) {
  RegWriteValue(Path(), schema::kAdmin, REG_DWORD, u"0");
  const std::int16_t scenario_count = Variant(Scenarios()->Count()).ToI2();
  for (std::int32_t i = 1; i <= scenario_count; ++i)
    Scenarios()->Item(i)->Initialize(MXScenarioModeInit_All, wWithOutScenVar);
  // The flag asks for the reset that its name denies, and only its value 1 does.
  if (wWithOutDomVar == 1) {
    const std::int16_t variable_count = Variant(Variables()->Count()).ToI2();
    for (std::int32_t i = 1; i <= variable_count; ++i) Variables()->Item(i)->Initialize(this);
  }
  return VARIANT_TRUE;
}

Status Domaine::Update(const Variant& wComment) {
  WriteComment(wComment);
  comment_ = wComment;
  return VARIANT_TRUE;
}

ObjectPtr<Variables> Domaine::Variables() {
  if (!variables_) {
    variables_ = moxel::Variables::Create();
    LoadVariables(*variables_);
  }
  return variables_;
}

ObjectPtr<Scenarios> Domaine::Scenarios() {
  if (!scenarios_) {
    scenarios_ = moxel::Scenarios::Create();
    LoadScenarios(*scenarios_);
  }
  return scenarios_;
}

Status Domaine::Validate() const {
  if (KeyExists(Path())) HandleError(lMXDomainError_DomainAlreadyExist, u"Domaine:Validate");
  WriteComment(comment_);
  return VARIANT_TRUE;
}

void Domaine::WriteComment(const Variant& comment) const {
  RegWriteValue(Path(), schema::kComment, REG_SZ, comment.ToText());
}

void Domaine::LoadVariables(moxel::Variables& variables) const { LoadVariableRecords(Path(), variables); }

void Domaine::LoadScenarios(moxel::Scenarios& scenarios) const {
  LoadScenarioRecords([this](const Variant& domain) { return domain.Equals(key); }, scenarios);
}

}  // namespace moxel
