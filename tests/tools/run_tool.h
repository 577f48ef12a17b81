// One run of the command line tool inside the test's own process.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "moxel/tool.h"

namespace moxel::test {

using Arguments = std::vector<std::string>;

inline Arguments operator+(Arguments left, const Arguments& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// A command line's arguments: '' is an empty one.
inline Arguments Words(const std::string& line) {
  std::istringstream in(line);
  Arguments words{std::istream_iterator<std::string>(in), {}};
  std::replace(words.begin(), words.end(), std::string("''"), std::string());
  return words;
}

struct ToolRun {
  int exit_code;
  std::string out;
  std::string err;
};

// `prepare` may make the console something else than three redirected streams.
inline ToolRun Moxel(const Arguments& arguments, const std::string& input = "",
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

// A command that has to succeed in silence on the error stream; gives what it printed.
inline std::string Do(const Arguments& arguments, const std::string& input = "") {
  const ToolRun run = Moxel(arguments, input);
  EXPECT_EQ(std::pair(run.exit_code, run.err), std::pair(0, std::string()))
      << ::testing::PrintToString(arguments);
  return run.out;
}

}  // namespace moxel::test
