// The owner of a variable, as clients pass it: any object, of which only its kind and its name count.
#pragma once

#include <string>

#include "moxel/platform.h"

namespace moxel {

// True when the object implements the interface `_Domaine`, respectively `_Scenario`.
bool IsDomain(IDispatch* object);
bool IsScenario(IDispatch* object);

// The object's automation property `key`. Whatever error the object answers.
std::u16string KeyOf(IDispatch* object);

}  // namespace moxel
