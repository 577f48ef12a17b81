#include "domains/domaines.h"

#include "errors/handle_error.h"
#include "moxel/enumerations.h"
#include "registry/schema.h"
#include "registry/store.h"

namespace moxel {
namespace {

void RefuseUnlessEmpty(Domaine& domain) {
  const std::int32_t variables = domain.Variables()->Count();
  const std::int32_t scenarios = domain.Scenarios()->Count();
  if (variables != 0 || scenarios != 0) HandleError(lMXDomainError_ContainElement, u"Domaines:DeleteDomain");
}

void DeleteScenarios(Domaine& domain) {
  const std::int16_t count = Variant(domain.Scenarios()->Count()).ToI2();
  for (std::int32_t i = 1; i <= count; ++i)
    RegDeleteKeyTree(schema::kScenarios, domain.Scenarios()->Item(i)->key);
}

}  // namespace

ObjectPtr<Domaine> Domaines::NewDomain(const std::u16string& wDom, const Variant& wComment) {
  if (wDom.empty()) HandleError(lMXDomainError_DomainRequired, u"Domaines:NewDomain");
  ObjectPtr<Domaine> domain = Domaine::Create();
  domain->key = wDom;
  domain->SetComment(wComment);
  domain->Validate();
  Add(*domain);
  return domain;
}

Status Domaines::DeleteDomain(Domaine& wDomaine, std::int16_t wForce) {
  wForce == 0 ? RefuseUnlessEmpty(wDomaine) : DeleteScenarios(wDomaine);
  Status deleted = RegDeleteKeyTree(schema::kDomain, wDomaine.key);
  if (!deleted) Remove(wDomaine.key);
  return deleted;
}

}  // namespace moxel
