#pragma once

#include <istream>
#include <ostream>

namespace moxel::tool {

// The streams a command talks to.
struct Console {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
};

}  // namespace moxel::tool
