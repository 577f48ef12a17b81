#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "moxel/console.h"

namespace moxel::tool {

inline constexpr const char* kVersion = "1.4";

// The whole command line: every group and verb with its options, its help and what it does. The tool parses
// with it; the manual page and the completion are made from it. Commands talk to `console`, which outlives
// it.
std::unique_ptr<CLI::App> DescribeCommandLine(Console& console);

}  // namespace moxel::tool
