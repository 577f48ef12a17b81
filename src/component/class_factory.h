// Class factories of the creatable classes.
#pragma once

#include "component/classes.h"

namespace moxel::component {

// A new factory of a class, as the interface asked for.
HRESULT CreateFactory(const CreatableClass& creatable, REFIID riid, void** result);

}  // namespace moxel::component
