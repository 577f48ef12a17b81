#include "scenarios/traitements.h"

#include "registry/schema.h"
#include "registry/store.h"

namespace moxel {

Status Traitements::DeleteTraitement(const Traitement& wTraitement, const std::u16string& wScenarioName) {
  Status deleted =
      RegDeleteKeyTree(schema::Path(schema::kScenarios, wScenarioName, schema::kTaches), wTraitement.key);
  Remove(wTraitement.key);
  return deleted;
}

}  // namespace moxel
