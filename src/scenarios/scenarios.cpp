#include "scenarios/scenarios.h"

#include "errors/handle_error.h"
#include "moxel/enumerations.h"
#include "registry/schema.h"
#include "registry/store.h"

namespace moxel {

Status Scenarios::DeleteScenario(Scenario& wScenario, std::int16_t wForce) {
  if (wForce == 0) {
    const std::int32_t variables = wScenario.Variables()->Count();
    const std::int32_t tasks = wScenario.Traitements()->Count();
    if (variables != 0 || tasks != 0)
      HandleError(lMXScenarioError_ContainElement, u"Scenarios:DeleteScenario");
  }
  Status deleted = RegDeleteKeyTree(schema::kScenarios, wScenario.key);
  if (!deleted) Remove(wScenario.key);
  return deleted;
}

}  // namespace moxel
