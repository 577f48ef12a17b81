#pragma once

#include <CLI/CLI.hpp>

namespace moxel::tool {

// Makes `group` take exactly one of its verbs. An unknown verb is named in the refusal, which CLI11's own
// requirement would not do.
void RequireVerb(CLI::App& group);

}  // namespace moxel::tool
