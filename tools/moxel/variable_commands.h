#pragma once

#include <CLI/CLI.hpp>

#include "moxel/console.h"

namespace moxel::tool {

// `moxel variable ...`: variables of domains and scenarios, through the component.
void AddVariableCommands(CLI::App& app, Console& console);

}  // namespace moxel::tool
