// The tasks of one scenario, in the order in which the registry lists them.
#pragma once

#include <string>

#include "moxel/interfaces.h"
#include "platform/automation/object_collection.h"
#include "registry/status.h"
#include "scenarios/traitement.h"

namespace moxel {

class Traitements : public ObjectCollection<Traitement, _Traitements> {
 public:
  // A new, empty collection.
  static ObjectPtr<Traitements> Create();

  // Deletes a task's registry key, with all below it, of the scenario with the given name, and takes the task
  // out of this collection whether that succeeded or not. True when the key is gone. Error 5 for a task that
  // this collection does not hold, after its key was deleted. The scenario's task order goes on naming it.
  Status DeleteTraitement(const Traitement& wTraitement, const std::u16string& wScenarioName);
};

}  // namespace moxel
