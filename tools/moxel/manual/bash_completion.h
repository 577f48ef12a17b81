#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace moxel::tool {

// The completion script for bash: tables of all verbs and options, and the functions that read them.
std::string BashCompletion(const CLI::App& app, const std::string& functions);

}  // namespace moxel::tool
