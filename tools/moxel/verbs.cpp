#include "moxel/verbs.h"

namespace moxel::tool {

void RequireVerb(CLI::App& group) {
  group.require_subcommand(0, 1);
  group.final_callback([&group] {
    if (group.get_subcommands().empty()) throw CLI::RequiredError("A subcommand");
  });
}

}  // namespace moxel::tool
