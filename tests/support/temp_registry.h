// A registry file of its own for every test, in a temporary folder that goes with the test.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

namespace moxel::test {

class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "moxel-test-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Base of every test that touches the registry: MOXEL_REGISTRY names a file that does not exist yet.
class RegistryTest : public ::testing::Test {
 protected:
  RegistryTest() { ::setenv("MOXEL_REGISTRY", file().c_str(), 1); }

  std::filesystem::path file() const { return folder_.path() / "registry.db"; }
  const std::filesystem::path& folder() const { return folder_.path(); }

 private:
  TempFolder folder_;
};

}  // namespace moxel::test
