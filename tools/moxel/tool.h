#pragma once

#include "moxel/console.h"

namespace moxel {

// One run of the command line tool, main in all but name. The result is the exit code of the process: 0 done,
// 1 refused or failed, 2 wrong usage or malformed input. Failures are one line on the error stream. Never
// throws.
int RunTool(int argc, const char* const* argv, tool::Console console);

}  // namespace moxel
