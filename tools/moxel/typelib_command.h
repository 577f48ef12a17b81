// The verb `typelib`.
#pragma once

#include <CLI/CLI.hpp>

#include "moxel/console.h"

namespace moxel::tool {

void AddTypelibCommand(CLI::App& app, Console& console);

}  // namespace moxel::tool
