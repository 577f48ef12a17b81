// Scenarios of the product or of one domain.
#pragma once

#include <cstdint>

#include "moxel/interfaces.h"
#include "platform/automation/object_collection.h"
#include "registry/status.h"
#include "scenarios/scenario.h"

namespace moxel {

class Scenarios : public ObjectCollection<Scenario, _Scenarios> {
 public:
  // A new, empty collection.
  static ObjectPtr<Scenarios> Create();

  // Deletes a scenario's registry key with all below it; true when it is gone. Unless forced (non-zero), a
  // scenario with variables or tasks is refused: 1702, Source "Scenarios:DeleteScenario". The collection
  // drops the scenario only when the deletion FAILED; after a successful one it keeps it until Remove.
  // Clients rely on that.
  Status DeleteScenario(Scenario& wScenario, std::int16_t wForce);
};

}  // namespace moxel
