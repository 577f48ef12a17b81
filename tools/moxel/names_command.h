#pragma once

#include <CLI/CLI.hpp>

#include "moxel/console.h"

namespace moxel::tool {

// `moxel names KIND`, which no help shows: what the completion of the shell asks at every key press. It reads
// names from the registry alone, loading neither the component nor any object.
void AddNamesCommand(CLI::App& app, Console& console);

}  // namespace moxel::tool
