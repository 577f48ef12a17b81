// The type library as text.
#pragma once

#include <string>

#include "moxel/type_model.h"

namespace moxel::tool {

// Interface definition language. It stands alone: the platform's own types are defined in front.
std::string IdlText(const TypeModel& model);

// The reference of the object model, for people.
std::string MarkdownText(const TypeModel& model);

// As both write dispatch ids: those with a meaning of their own in decimal, all others in hexadecimal.
std::string IdText(MEMBERID id);

}  // namespace moxel::tool
