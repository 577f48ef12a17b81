// Direct look-up of one variable.
#pragma once

#include "moxel/interfaces.h"
#include "moxel/object_ptr.h"
#include "moxel/variant.h"
#include "variables/variable.h"

namespace moxel {

// The second class that clients can create: reads one variable straight from the registry, without loading
// anything else.
class RootVar : public _RootVar {
 public:
  static ObjectPtr<RootVar> Create();

  // The variable `wVar` of the domain `wDom` or, only when that is empty, of the scenario `wScen`; no object
  // when there is none. Names are compared exactly. Never fails: a malformed record gives a variable with
  // defaults.
  ObjectPtr<Variable> RecupVariable(const Variant& wDom, const Variant& wScen, const Variant& wVar) const;
};

}  // namespace moxel
