#include <iostream>

#include "moxel/tool.h"

int main(int argc, char** argv) { return moxel::RunTool(argc, argv, std::cin, std::cout, std::cerr); }
