// What the registry's tests share: handles that close themselves, one-line access to keys and values, and
// child processes that answer in words.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "moxel/platform.h"
#include "moxel/platform/registry_file.h"
#include "tests/support/temp_registry.h"

namespace moxel::test {

class Key {
 public:
  explicit Key(HKEY handle = 0) : handle_(handle) {}
  ~Key() { Close(); }
  Key(Key&& other) noexcept : handle_(std::exchange(other.handle_, 0)) {}
  Key& operator=(Key&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  operator HKEY() const { return handle_; }
  HKEY* Out() { return &handle_; }
  void Close() {
    if (handle_ != 0) RegCloseKey(std::exchange(handle_, 0));
  }

 private:
  HKEY handle_;
};

inline LSTATUS TryOpen(HKEY base, const std::string& path, REGSAM access = KEY_READ) {
  Key key;
  return RegOpenKeyExA(base, path.c_str(), 0, access, key.Out());
}

inline LSTATUS TryCreate(HKEY base, const std::string& path) {
  Key key;
  return RegCreateKeyExA(base, path.c_str(), 0, nullptr, 0, KEY_READ, nullptr, key.Out(), nullptr);
}

// Handles for tests that are about something else: 0 on a failure, which later calls then report.
inline Key Open(HKEY base, const std::string& path, REGSAM access = KEY_READ) {
  Key key;
  RegOpenKeyExA(base, path.c_str(), 0, access, key.Out());
  return key;
}

inline Key Create(HKEY base, const std::string& path, REGSAM access = KEY_ALL_ACCESS) {
  Key key;
  RegCreateKeyExA(base, path.c_str(), 0, nullptr, 0, access, nullptr, key.Out(), nullptr);
  return key;
}

inline LSTATUS Set(HKEY key, const std::string& name, std::string_view bytes, DWORD type = REG_BINARY) {
  return RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                        static_cast<DWORD>(bytes.size()));
}

// A value's bytes, or nothing where the query fails.
inline std::optional<std::string> Get(HKEY key, const std::string& name) {
  std::string data(70000, '\0');
  auto size = static_cast<DWORD>(data.size());
  if (RegQueryValueExA(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(data.data()), &size) != 0)
    return std::nullopt;
  data.resize(size);
  return data;
}

// The name at an index, or nothing where the call answers anything but success.
inline std::optional<std::string> SubkeyName(HKEY key, DWORD index) {
  char name[300];
  DWORD length = sizeof name;
  if (RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) return std::nullopt;
  return std::string(name, length);
}

inline std::optional<std::string> ValueName(HKEY key, DWORD index) {
  static thread_local std::array<char, 16384> name;
  DWORD length = name.size();
  if (RegEnumValueA(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) != 0)
    return std::nullopt;
  return std::string(name.data(), length);
}

using NameAt = std::optional<std::string> (*)(HKEY, DWORD);

inline std::vector<std::string> NamesOf(HKEY key, NameAt name_at) {
  std::vector<std::string> names;
  while (auto name = name_at(key, static_cast<DWORD>(names.size()))) names.push_back(*name);
  return names;
}

// Runs in a thread of its own, so with a connection of its own that is closed at the end.
template <class Body>
void OnAnotherThread(Body&& body) {
  std::thread(std::forward<Body>(body)).join();
}

// A forked process that answers with a text; a test's process never runs on in it.
class Child {
 public:
  explicit Child(const std::function<std::string()>& body) {
    int ends[2];
    if (::pipe(ends) != 0) return;
    pid_ = ::fork();
    if (pid_ == 0) {
      ::close(ends[0]);
      Write(ends[1], body());
      ::_exit(0);
    }
    ::close(ends[1]);
    answer_ = ends[0];
  }
  ~Child() {
    if (pid_ > 0) Kill(), Answer();
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Kill() { ::kill(pid_, SIGKILL); }

  // What the child's body returned; the way it ended where it did not come so far.
  std::string Answer() {
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::read(answer_, buffer, sizeof buffer)) > 0;)
      text.append(buffer, static_cast<std::size_t>(n));
    ::close(answer_);
    int status = 0;
    ::waitpid(std::exchange(pid_, 0), &status, 0);
    return status == 0 ? text : text + " ended with status " + std::to_string(status);
  }

  static void Write(int end, std::string_view text) {
    while (!text.empty()) {
      ssize_t n = ::write(end, text.data(), text.size());
      if (n <= 0) return;
      text.remove_prefix(static_cast<std::size_t>(n));
    }
  }

 private:
  pid_t pid_ = 0;
  int answer_ = -1;
};

// Records from one process to another; made before the fork, shared by both.
class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe(ends_), 0); }
  ~Pipe() {
    ::close(ends_[0]);
    CloseWriting();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void CloseWriting() {
    if (ends_[1] >= 0) ::close(std::exchange(ends_[1], -1));
  }
  template <class Record>
  void Send(const Record& record) {
    Child::Write(ends_[1], {reinterpret_cast<const char*>(&record), sizeof record});
  }
  template <class Record>
  bool Receive(Record& record) {
    return ::read(ends_[0], &record, sizeof record) == static_cast<ssize_t>(sizeof record);
  }
  // Until every process has closed its writing end, or is gone.
  void WaitForClose() {
    CloseWriting();
    for (char ignored; Receive(ignored);) continue;
  }

 private:
  int ends_[2] = {-1, -1};
};

}  // namespace moxel::test
