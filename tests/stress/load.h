// What the load programs share: how much they do, which the environment says, and a board that all
// processes of a test see.
#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <new>
#include <random>
#include <string>

#include "tests/support/registry_access.h"

namespace moxel::test {

using Clock = std::chrono::steady_clock;

// A number that the environment gives, else that of the short form.
inline int Setting(const char* name, int short_form) {
  const char* text = std::getenv(name);
  return text != nullptr ? std::atoi(text) : short_form;
}

inline int NumberIn(HKEY key, const std::string& name) { return std::stoi(Get(key, name).value_or("0")); }

// A value whose bytes are all alike, and whose length tells which.
inline std::string Uniform(std::size_t size) { return std::string(size, static_cast<char>('a' + size % 26)); }

class Board {
 public:
  std::atomic<std::int64_t> calls = 0, counted = 0, longest_microseconds = 0;
  std::atomic<int> arrived = 0;
  std::atomic<int> returned[8] = {};  // of each hand, the number of the last call that did
  std::atomic<bool> stop = false;

  // Returns when `hands` hands have come for the n-th time.
  void Meet(int n, int hands) {
    ++arrived;
    while (arrived < n * hands && !stop) std::this_thread::yield();
  }

  template <class Call>
  auto Time(Call call) {
    const auto start = Clock::now();
    auto answer = call();
    const std::int64_t time = (Clock::now() - start) / std::chrono::microseconds(1);
    for (auto longest = longest_microseconds.load();
         time > longest && !longest_microseconds.compare_exchange_weak(longest, time);) {
    }
    ++calls;
    return answer;
  }

  void Print() const {
    std::cout << "[ figures  ] " << calls << " calls, the longest took " << longest_microseconds / 1000
              << " ms\n";
  }
};

// Every program of a test has the one board.
class RegistryLoad : public RegistryKeyTest {
 protected:
  RegistryLoad()
      : board_(*new (::mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1,
                            0)) Board) {}
  ~RegistryLoad() override { ::munmap(&board_, sizeof board_); }

  // At the end of every load: the file is sound, no lock was left behind, and nobody waited in vain.
  void ExpectAllWell() {
    EXPECT_EQ(RegFileCheck(), 0) << RegFileCause();
    OnAnotherThread([] {
      const auto start = Clock::now();
      EXPECT_EQ(Text({RegFileBegin(), Set(kRoot, "after", "1"), RegFileCommit()}), "0 0 0 ");
      EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    });
    EXPECT_LT(board_.longest_microseconds, 10'000'000);
    board_.Print();
  }

  Board& board_;
};

}  // namespace moxel::test
