// The type library: what clients can ask about the component's interfaces, classes and enumerations.
#pragma once

#include "component/class_info.h"

namespace moxel::component {

// The type information of a class's dual interface, with a reference for the caller.
ITypeInfo* TypeInfoOf(const ClassInfo& info);

}  // namespace moxel::component
