#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace moxel::tool {

// The manual page of the tool, as roff. `date` stands at its foot: YYYY-MM-DD.
std::string ManPage(const CLI::App& app, const std::string& date);

}  // namespace moxel::tool
