// One run of the command line tool inside the test's own process.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "moxel/tool.h"

namespace moxel::test {

struct ToolRun {
  int exit_code;
  std::string out;
  std::string err;
};

// `prepare` may make the console something else than three redirected streams.
inline ToolRun Moxel(const std::vector<std::string>& arguments, const std::string& input = "",
                     const std::function<void(tool::Console&)>& prepare = {}) {
  std::vector<const char*> argv{"moxel"};
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  tool::Console console{in, out, err};
  if (prepare) prepare(console);
  const int exit_code = RunTool(static_cast<int>(argv.size()), argv.data(), console);
  return {exit_code, out.str(), err.str()};
}

}  // namespace moxel::test
