#pragma once

#include <CLI/CLI.hpp>

#include "moxel/console.h"

namespace moxel::tool {

// `moxel registry ...`: the keys and values of the registry as such, whatever they mean to the product.
void AddRegistryCommands(CLI::App& app, Console& console);

}  // namespace moxel::tool
