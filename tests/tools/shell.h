// The tool as it was built, and commands that use it from a shell.
#pragma once

#include <stdio.h>

#include <filesystem>
#include <memory>
#include <string>

namespace moxel::test {

// What a command prints on both streams.
inline std::string ShellOutput(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(("{ " + command + "\n} 2>&1").c_str(), "r"),
                                                   ::pclose);
  std::string output;
  for (int c; (c = ::fgetc(pipe.get())) != EOF;) output += static_cast<char>(c);
  return output;
}

inline std::string ShellWord(const std::string& text) {
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? "'\\''" : std::string(1, c);
  return word + '\'';
}

// The folder of the build: bin/moxel is the tool, share/ what comes with it.
inline std::filesystem::path BuildFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
}

}  // namespace moxel::test
