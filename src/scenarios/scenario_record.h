// Reading scenarios back from the registry.
#pragma once

#include <functional>

#include "moxel/variant.h"
#include "scenarios/scenarios.h"

namespace moxel {

// Adds to a collection each scenario whose domain, as read (the empty text where there is none), is wanted.
// Never fails: what cannot be read keeps its default.
void LoadScenarioRecords(const std::function<bool(const Variant& domain)>& is_wanted, Scenarios& scenarios);

}  // namespace moxel
