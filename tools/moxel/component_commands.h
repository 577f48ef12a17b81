#pragma once

#include <CLI/CLI.hpp>

#include "moxel/console.h"

namespace moxel::tool {

// `moxel register` and `moxel unregister`.
void AddComponentCommands(CLI::App& app, Console& console);

}  // namespace moxel::tool
