#include "scenarios/traitement.h"

#include "moxel/enumerations.h"
#include "registry/schema.h"
#include "registry/store.h"

namespace moxel {
namespace {

std::u16string TaskPath(const Variant& scenario, std::u16string_view task) {
  return schema::Path(schema::kScenarios, scenario.ToText(), schema::kTaches, task);
}

bool MayBeSet(std::int16_t state) {
  return state == MXTraitementState_NotProcessed || state == MXTraitementState_Processed ||
         state == MXTraitementState_Retry;
}

}  // namespace

Status Traitement::Initialize(const Variant& wScenarioName, std::int16_t wState) {
  const std::u16string path = TaskPath(wScenarioName, key);
  if (MayBeSet(wState)) {
    RegWriteValue(path, schema::kEtat, REG_DWORD, Variant(wState).ToText());
    state_ = wState;
  }
  return VARIANT_TRUE;
}

std::int16_t Traitement::State() {
  state_ = ReadNumberOrZero(TaskPath(source_, key), schema::kEtat).ToI2();
  return state_;
}

}  // namespace moxel
