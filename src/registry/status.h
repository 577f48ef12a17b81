// The truth results of the store and of the published members: 16-bit, -1 for true and 0 for false.
#pragma once

#include "moxel/platform.h"

namespace moxel {

using Status = VARIANT_BOOL;

inline constexpr Status StatusOf(bool success) { return success ? VARIANT_TRUE : VARIANT_FALSE; }

}  // namespace moxel
