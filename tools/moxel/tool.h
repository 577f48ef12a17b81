#pragma once

#include <istream>
#include <ostream>

namespace moxel {

// One run of the command line tool, main in all but name. The result is the exit code of the process: 0 done,
// 1 refused or failed, 2 wrong usage or malformed input. Failures are one line on `err`. Never throws.
int RunTool(int argc, const char* const* argv, std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace moxel
