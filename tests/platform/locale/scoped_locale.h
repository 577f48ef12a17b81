// The user's locale for the span of a test, through the environment.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace moxel::test {

class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const char* value) : name_(std::move(name)) {
    if (const char* old = ::getenv(name_.c_str())) old_ = old;
    Put(value);
  }
  ~ScopedEnvironment() { Put(old_ ? old_->c_str() : nullptr); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void Put(const char* value) {
    value == nullptr ? ::unsetenv(name_.c_str()) : ::setenv(name_.c_str(), value, 1);
  }

  std::string name_;
  std::optional<std::string> old_;
};

class ScopedLocale : ScopedEnvironment {
 public:
  explicit ScopedLocale(const char* name) : ScopedEnvironment("LC_ALL", name) {}
};

}  // namespace moxel::test
