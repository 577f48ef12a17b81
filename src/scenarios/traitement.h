// One task of a scenario.
#pragma once

#include <cstdint>
#include <string>

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"
#include "registry/status.h"

namespace moxel {

// A task as it was loaded. Only its run state is live: the product's execution engine changes it while a
// scenario runs, so State reads the registry at every call.
class Traitement : public _Traitement {
 public:
  // A new, empty task.
  static ObjectPtr<Traitement> Create();

  // Its name, its key in collections and the name of its registry key. Assigning it has no other effect.
  std::u16string key;

  // Writes a run state of the task below a scenario given by its name: 0, 2 or 4. Any other writes nothing,
  // since only the execution engine sets those. Always true.
  Status Initialize(const Variant& wScenarioName, std::int16_t wState);

  // The run state, read now; 0 when there is none. Error 13 or 6 for a state that is no 16-bit number.
  std::int16_t State();

  std::int16_t TypeTask() const { return type_task_; }
  // The date of the last run, as stored.
  const Variant& LastExe() const { return last_exe_; }
  // The statuses of the four actions, joined.
  const Variant& StatusAct() const { return status_act_; }
  // The name of the scenario.
  const Variant& Source() const { return source_; }

  // A mark in memory.
  std::int16_t Selected() const { return selected_; }
  void SetSelected(std::int16_t selected) { selected_ = selected; }

  void SetTypeTask(std::int16_t wTypeTask) { type_task_ = wTypeTask; }
  void SetState(std::int16_t wState) { state_ = wState; }
  void SetLastExe(const Variant& wLastExe) { last_exe_ = wLastExe; }
  void SetStatusAct(const Variant& wStatusAct) { status_act_ = wStatusAct; }
  void SetSource(const Variant& wSource) { source_ = wSource; }

 private:
  Variant source_;
  std::int16_t type_task_ = 0;
  Variant last_exe_;
  std::int16_t state_ = 0;
  Variant status_act_;
  std::int16_t selected_ = 0;
};

}  // namespace moxel
