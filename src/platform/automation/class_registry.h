// Look-ups of registered classes.
#pragma once

#include <optional>
#include <string>

#include "moxel/platform.h"

namespace moxel {

// The default value of a key below HKEY_CLASSES_ROOT, up to its NUL, in the bytes it was stored in. Nothing
// when there is none.
std::optional<std::string> ReadClassValue(const std::string& path);

}  // namespace moxel
