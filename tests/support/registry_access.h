// What the registry's tests share: keys that close themselves, one-line access to keys and values, and child
// processes that answer in words.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <numeric>
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

inline constexpr HKEY kRoot = HKEY_LOCAL_MACHINE;
inline constexpr const char* kPath = "SOFTWARE\\X";

// A handle, and what the call answered that made it. The handle is 0 after a failure, which later calls
// then report.
struct Key {
  ~Key() {
    if (handle != 0) RegCloseKey(handle);
  }
  Key& operator=(Key&&) = delete;
  operator HKEY() const { return handle; }

  LSTATUS answer;
  HKEY handle;
};

inline Key Open(HKEY base, const std::string& path, REGSAM access = KEY_READ) {
  HKEY handle = 77;
  LSTATUS answer = RegOpenKeyExA(base, path.c_str(), 0, access, &handle);
  return {answer, handle};
}

inline Key Create(HKEY base, const std::string& path, REGSAM access = KEY_ALL_ACCESS, DWORD* made = nullptr) {
  HKEY handle = 77;
  LSTATUS answer = RegCreateKeyExA(base, path.c_str(), 0, nullptr, 0, access, nullptr, &handle, made);
  return {answer, handle};
}

inline LSTATUS Set(HKEY key, const std::string& name, std::string_view bytes, DWORD type = REG_BINARY) {
  return RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                        static_cast<DWORD>(bytes.size()));
}

inline LSTATUS Query(HKEY key, const std::string& name, char* area = nullptr, DWORD* size = nullptr) {
  return RegQueryValueExA(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(area), size);
}

// A value's bytes, or nothing where the query fails.
inline std::optional<std::string> Get(HKEY key, const std::string& name) {
  std::string data(70000, '\0');
  DWORD size = 70000;
  return Query(key, name, data.data(), &size) == 0 ? std::optional(data.substr(0, size)) : std::nullopt;
}

// The two lists of a key, which are stepped through and changed alike.
enum List { kSubkeys, kValues };

inline LSTATUS Step(List list, HKEY key, DWORD index, std::string* found = nullptr) {
  char name[16384];
  DWORD length = sizeof name;
  LSTATUS answer = list == kValues
                       ? RegEnumValueA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr)
                       : RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
  if (answer == 0 && found != nullptr) found->assign(name, length);
  return answer;
}

inline std::optional<std::string> NameAt(List list, HKEY key, DWORD index) {
  std::string name;
  return Step(list, key, index, &name) == 0 ? std::optional(name) : std::nullopt;
}

// All names, each with a comma behind it.
inline std::string Names(List list, HKEY key) {
  std::string names;
  for (DWORD index = 0; auto name = NameAt(list, key, index); ++index) names += *name + ",";
  return names;
}

inline LSTATUS Add(List list, HKEY key, const std::string& name) {
  return list == kValues ? Set(key, name, name) : Create(key, name).answer;
}

inline LSTATUS Remove(List list, HKEY key, const std::string& name) {
  return list == kValues ? RegDeleteValueA(key, name.c_str()) : RegDeleteKeyA(key, name.c_str());
}

// Codes, or other numbers that calls answer with.
using Answers = std::vector<std::int64_t>;

inline std::string Text(const Answers& answers) {
  std::string text;
  for (auto answer : answers) text += std::to_string(answer) + " ";
  return text;
}

inline std::string Digits(int number) { return std::to_string(number); }

// What every call that works on a key answers, given arguments that are right.
inline Answers AllCalls(HKEY key) {
  return {Open(key, "below").answer, Open(key, "", KEY_ALL_ACCESS).answer,
          Create(key, "new").answer, Query(key, "v"),
          Set(key, "v", "1"),        Step(kSubkeys, key, 0),
          Step(kValues, key, 0),     Remove(kSubkeys, key, "below"),
          Remove(kValues, key, "v")};
}

inline bool CauseNamesTheFile() { return std::string(RegFileCause()).starts_with(RegFilePath()); }

class RegistryKeyTest : public RegistryTest {
 protected:
  Key key_ = Create(kRoot, kPath);
};

// Runs in a thread of its own, so with a connection of its own that is closed at the end.
inline void OnAnotherThread(const std::function<void()>& body) { std::thread(body).join(); }

// Goes on as an account without any rights of its own; only root can.
inline void BecomeNobody() {
  if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(1);
}

// From one process to another; made before the fork, shared by both.
class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe(ends_), 0); }
  ~Pipe() { CloseWriting(), ::close(ends_[0]); }
  Pipe& operator=(Pipe&&) = delete;

  void CloseWriting() { ::close(std::exchange(ends_[1], -1)); }
  void Write(std::string_view text) {
    EXPECT_EQ(::write(ends_[1], text.data(), text.size()), std::ssize(text));
  }
  void Send(int number) { Write({reinterpret_cast<const char*>(&number), sizeof number}); }
  int reading_end() const { return ends_[0]; }
  bool Receive(int& number) { return ::read(ends_[0], &number, sizeof number) == sizeof number; }

  // What is written until every process has closed its writing end, or is gone.
  std::string Rest() {
    CloseWriting();
    std::string text;
    for (char c; ::read(ends_[0], &c, 1) == 1;) text += c;
    return text;
  }

 private:
  int ends_[2] = {-1, -1};
};

// A forked process that answers with a text; a test's process never runs on in it, whatever is thrown.
class Child {
 public:
  explicit Child(const std::function<std::string()>& body) : pid_(::fork()) {
    if (pid_ == 0) [&]() noexcept { answer_.Write(body()), ::_exit(0); }();
    answer_.CloseWriting();
  }
  ~Child() {
    if (pid_ > 0) Kill(), Answer();
  }
  Child& operator=(Child&&) = delete;

  void Kill() { ::kill(pid_, SIGKILL); }

  // What the child's body returned; the way it ended where it did not come so far.
  std::string Answer() {
    std::string text = answer_.Rest();
    int status = 0;
    ::waitpid(std::exchange(pid_, 0), &status, 0);
    return status == 0 ? text : text + " ended with status " + std::to_string(status);
  }

 private:
  Pipe answer_;
  pid_t pid_;
};

enum Hands { kThreads, kProcesses };

// What hands answer that set out together.
inline std::string AllAtOnce(Hands hands, int count, const std::function<std::string(int)>& work) {
  Pipe gate;
  std::deque<std::string> answers;
  std::deque<std::thread> threads;
  std::deque<Child> children;
  for (int me = 0; me < count; ++me) {
    if (hands == kProcesses)
      children.emplace_back([&, me] { return gate.Rest(), work(me); });
    else
      threads.emplace_back([&work, me, &answer = answers.emplace_back()] { answer = work(me); });
  }
  gate.CloseWriting();
  for (auto& thread : threads) thread.join();
  for (auto& child : children) answers.push_back(child.Answer());
  return std::accumulate(answers.begin(), answers.end(), std::string());
}

}  // namespace moxel::test
