// Writes what comes with the tool and is made from its own description of the command line; runs in the
// build.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "moxel/command_line.h"
#include "moxel/files.h"
#include "moxel/manual/bash_completion.h"
#include "moxel/manual/man_page.h"

namespace moxel::tool {
namespace {

int Write(const std::vector<std::string>& arguments) {
  if (arguments.size() != 3) {
    std::cerr << "usage: moxel-manual man-page DATE OUTPUT | completion FUNCTIONS OUTPUT\n";
    return 2;
  }
  Console console{std::cin, std::cout, std::cerr};
  const auto app = DescribeCommandLine(console);
  WriteFile(arguments[2], arguments[0] == "man-page" ? ManPage(*app, arguments[1])
                                                     : BashCompletion(*app, ReadFile(arguments[1])));
  return 0;
}

}  // namespace
}  // namespace moxel::tool

int main(int argc, char** argv) {
  try {
    return moxel::tool::Write({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::cerr << "moxel-manual: " << error.what() << '\n';
    return 1;
  }
}
