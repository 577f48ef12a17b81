// Stepping by index: exact whatever happens to the list between two steps, and a step's cost does not grow.
#include <algorithm>
#include <chrono>
#include <random>

#include "registry_helpers.h"

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
      if (changes == 0) Walk(walkers_[Below(3)]);
      for (; changes > 0; --changes) Change();
    }
  }

 private:
  struct Walker {
    Key handle = Open(HKEY_LOCAL_MACHINE, kPath);
    DWORD next[2] = {};
  };

  unsigned Below(std::size_t limit) { return static_cast<unsigned>(random_() % limit); }

  std::string Name() {
    static constexpr const char* kPrefixes[] = {"a", "A", "b", "m", "M_", "Z", "\xE9", "\xC9", "_", "S1"};
    unsigned number = Below(pool_);
    std::string name = kPrefixes[number % 10] + std::to_string(number / 10);
    return Below(4) == 0 ? Upper(name) : name;
  }

  void Change() {
    std::string name = Name();
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

  void Walk(Walker& walker) {
    List list = Below(2) == 0 ? kSubkeys : kValues;
    DWORD& index = walker.next[list];
    const auto& names = model_[list];
    switch (Below(8)) {
      case 0: index = Below(pool_ + 2); break;
      case 1: index = 0; break;
      case 2: index -= index > 0 ? 1 : 0; break;
      case 3: break;
      default: ++index;
    }
    bool there = index < names.size();
    EXPECT_EQ(NameAt(list, walker.handle, index), there ? std::optional(names[index]) : std::nullopt);
    if (!there && Below(2) == 0) index = 0;
  }

  std::mt19937 random_;
  std::size_t pool_;
  Key key_ = Create(HKEY_LOCAL_MACHINE, kPath);
  Walker walkers_[3];
  std::vector<std::string> model_[2];  // the two lists, kept the obvious way
};

class RegistryEnumeration : public RegistryTest {};

TEST_F(RegistryEnumeration, StepsAnswerWhatTheListHoldsAtThatMoment) {
  unsigned seed = 0;
  for (std::size_t pool : {1u, 2u, 3u, 5u, 12u, 40u}) {
    for (int round = 0; round < 4 && !HasFailure(); ++round) {
      SCOPED_TRACE("seed " + std::to_string(++seed) + " pool " + std::to_string(pool));
      ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(seed)).c_str(), 1);
      Story(seed, pool).Run(600);
    }
  }
}

TEST_F(RegistryEnumeration, AWalkIsNotMisledByAKeyOrAFileThatTookAnothersPlace) {
  auto fill = [](HKEY base, const std::string& names) {
    for (char name : names) ASSERT_EQ(Create(base, {name}).answer, 0);
  };
  fill(HKEY_CLASSES_ROOT, "ABC");
  ASSERT_EQ(NameAt(kSubkeys, HKEY_CLASSES_ROOT, 2), "C");
  for (const char* name : {"A", "B", "C", ""}) ASSERT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, name), 0);
  fill(HKEY_CLASSES_ROOT, "XYZ");
  EXPECT_EQ(NameAt(kSubkeys, HKEY_CLASSES_ROOT, 3), std::nullopt);
  EXPECT_EQ(NameAt(kSubkeys, HKEY_CLASSES_ROOT, 1), "Y");

  ASSERT_EQ(NameAt(kSubkeys, HKEY_LOCAL_MACHINE, 0), "SOFTWARE");
  ::setenv("MOXEL_REGISTRY", (folder() / "other.db").c_str(), 1);
  fill(HKEY_LOCAL_MACHINE, "TUV");
  EXPECT_EQ(NameAt(kSubkeys, HKEY_LOCAL_MACHINE, 1), "U");
  EXPECT_EQ(Names(kSubkeys, HKEY_LOCAL_MACHINE), "T,U,V,");
}

// Microseconds a step of a walk over n entries; with changes, through another handle, one between every two.
// All in one transaction, so that the disk has no part in it.
double CostOfAStep(List list, bool changing, DWORD n) {
  const std::string path = kPath + std::to_string(n);
  Key key = Create(HKEY_LOCAL_MACHINE, path), walker = Open(HKEY_LOCAL_MACHINE, path);
  EXPECT_EQ(RegFileBegin(), 0);
  for (DWORD i = 0; i < n; ++i) EXPECT_EQ(Add(list, key, "n" + std::to_string(i)), 0);
  DWORD index = 0;
  auto start = std::chrono::steady_clock::now();
  // A subkey added lies before the walker, a value behind it.
  for (; NameAt(list, walker, index); ++index)
    EXPECT_EQ(!changing ? 0 : index % 2 == 0 ? Add(list, key, "a") : Remove(list, key, "a"), 0);
  std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(RegFileCommit(), 0);
  EXPECT_NEAR(index, n, 1);
  return taken.count() / n;
}

TEST_F(RegistryEnumeration, AStepCostsTheSameInALongList) {
  for (List list : {kSubkeys, kValues}) {
    for (bool changing : {false, true}) {
      ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(list * 2 + changing)).c_str(), 1);
      CostOfAStep(list, changing, 100);
      double few = CostOfAStep(list, changing, 2000);
      EXPECT_LT(CostOfAStep(list, changing, 20000), 3 * few) << list << changing;
    }
  }
}

}  // namespace
}  // namespace moxel::test
