// A registry file of the process's own, in memory where the system has a folder there.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "fuzz/input.h"

namespace moxel::fuzz {

class TempRegistry {
 public:
  TempRegistry() {
    const char* wanted = ::getenv("TMPDIR");
    const bool has_memory = std::filesystem::is_directory("/dev/shm");
    folder_ = std::string(wanted != nullptr ? wanted
                          : has_memory      ? "/dev/shm"
                                            : "/tmp") +
              "/moxel-fuzz-XXXXXX";
    Require(::mkdtemp(folder_.data()) != nullptr, "a temporary folder can be made");
    ::setenv("MOXEL_REGISTRY", (folder_ + "/registry.db").c_str(), 1);
  }
  ~TempRegistry() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  TempRegistry(const TempRegistry&) = delete;
  TempRegistry& operator=(const TempRegistry&) = delete;

 private:
  std::string folder_;
};

}  // namespace moxel::fuzz
