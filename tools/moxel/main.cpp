#include <unistd.h>

#include <iostream>

#include "moxel/tool.h"

int main(int argc, char** argv) {
  return moxel::RunTool(
      argc, argv,
      {std::cin, std::cout, std::cerr, ::isatty(STDOUT_FILENO) == 1, ::isatty(STDERR_FILENO) == 1});
}
