// Stepping by index: exact whatever happens to the list between two steps, and a step's cost does not grow.
#include <algorithm>
#include <ctime>
#include <random>

#include "tests/support/registry_access.h"

namespace moxel::test {
namespace {

std::string Upper(std::string name) {
  for (char& c : name)
    if ((c >= 'a' && c <= 'z') || c == '\xE9') c = static_cast<char>(c - 0x20);
  return name;
}

// One random story: a small pool of names, a few handles, changes and steps in any order.
class Story {
 public:
  Story(unsigned seed, std::size_t pool) : random_(seed), pool_(pool) {}

  void Run(int events) {
    for (int event = 0; event < events && !::testing::Test::HasFailure(); ++event) {
      unsigned kind = Below(100), changes = kind < 40 ? 1 : kind == 40 ? 50 + Below(100) : 0;
      if (changes == 0) Walk(Below(3));
      for (; changes > 0; --changes) Change();
    }
  }

 private:
  unsigned Below(std::size_t limit) { return static_cast<unsigned>(random_() % limit); }

  void Change() {
    unsigned number = Below(pool_);
    std::string name = "aAbmZ_\xE9\xC9"[number % 8] + std::to_string(number / 8);
    if (Below(4) == 0) name = Upper(name);
    List list = Below(2) == 0 ? kSubkeys : kValues;
    auto& names = model_[list];
    auto found = std::ranges::find(names, Upper(name), Upper);
    bool there = found != names.end();
    if (Below(2) == 0) {
      EXPECT_EQ(Add(list, key_, name), 0);
      if (!there) names.push_back(name);
      if (list == kSubkeys) std::ranges::sort(names, {}, Upper);
    } else {
      EXPECT_EQ(Remove(list, key_, name), there ? 0 : 2);
      if (there) names.erase(found);
    }
  }

  void Walk(unsigned walker) {
    List list = Below(2) == 0 ? kSubkeys : kValues;
    DWORD& index = next_[walker][list];
    const auto& names = model_[list];
    const DWORD next[] = {Below(pool_ + 2), 0, index > 0 ? index - 1 : 0, index, index + 1};
    index = next[std::min(Below(8), 4u)];
    bool there = index < names.size();
    EXPECT_EQ(NameAt(list, walkers_[walker], index), there ? std::optional(names[index]) : std::nullopt);
    if (!there && Below(2) == 0) index = 0;
  }

  std::mt19937 random_;
  std::size_t pool_;
  Key key_ = Create(kRoot, kPath);
  Key walkers_[3] = {Open(kRoot, kPath), Open(kRoot, kPath), Open(kRoot, kPath)};
  DWORD next_[3][2] = {};
  std::vector<std::string> model_[2];  // the two lists, kept the obvious way
};

using RegistryEnumeration = RegistryTest;

TEST_F(RegistryEnumeration, StepsAnswerWhatTheListHoldsAtThatMoment) {
  const std::size_t pools[] = {1, 2, 3, 5, 12, 40};
  for (unsigned seed = 0; seed < 24 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(seed)).c_str(), 1);
    Story(seed, pools[seed % 6]).Run(600);
  }
}

TEST_F(RegistryEnumeration, AWalkIsNotMisledByAKeyOrAFileThatTookAnothersPlace) {
  for (const char* name : {"A", "B", "C"}) Create(HKEY_CLASSES_ROOT, name);
  ASSERT_EQ(NameAt(kSubkeys, HKEY_CLASSES_ROOT, 2), "C");
  for (const char* name : {"A", "B", "C"}) ASSERT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, name), 0);
  ASSERT_EQ(RegDeleteKeyA(kRoot, "SOFTWARE\\Classes"), 0);
  for (const char* name : {"X", "Y", "Z"}) Create(HKEY_CLASSES_ROOT, name);
  EXPECT_EQ(NameAt(kSubkeys, HKEY_CLASSES_ROOT, 3), std::nullopt);
  EXPECT_EQ(NameAt(kSubkeys, HKEY_CLASSES_ROOT, 1), "Y");

  ASSERT_EQ(NameAt(kSubkeys, kRoot, 0), "SOFTWARE");
  ::setenv("MOXEL_REGISTRY", (folder() / "other.db").c_str(), 1);
  for (const char* name : {"T", "U", "V"}) Create(kRoot, name);
  EXPECT_EQ(NameAt(kSubkeys, kRoot, 1), "U");
  EXPECT_EQ(Names(kSubkeys, kRoot), "T,U,V,");
}

TEST_F(RegistryEnumeration, AStepCostsTheSameInALongList) {
  for (List list : {kSubkeys, kValues}) {
    // The processor's time for a step of a walk over n entries, with a change through another handle between
    // some. All in one transaction, so that the disk has no part in it.
    auto cost = [list](DWORD n) {
      Key key = Create(kRoot, kPath + std::to_string(n)), walker = Open(key, "");
      EXPECT_EQ(RegFileBegin(), 0);
      for (DWORD i = 0; i < n; ++i) Add(list, key, "n" + std::to_string(i));
      DWORD index = 0;
      const std::clock_t start = std::clock();
      // A subkey added lies before the walker, a value behind it.
      for (; NameAt(list, walker, index); ++index)
        if (index % 2 == 0) index % 4 == 0 ? Add(list, key, "a") : Remove(list, key, "a");
      const std::clock_t taken = std::clock() - start;
      EXPECT_NEAR(index, n, 1);
      EXPECT_EQ(RegFileRollback(), 0);
      return static_cast<double>(taken) / n;
    };
    EXPECT_LT(cost(20000), 3 * cost(2000)) << list;
  }
}

}  // namespace
}  // namespace moxel::test
