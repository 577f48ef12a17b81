// Stepping by index: exact whatever happens to the list between two steps, and a step's cost does not grow.
#include <algorithm>
#include <chrono>
#include <map>
#include <random>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

std::string Upper(std::string name) {
  for (char& c : name) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 0x20);
    if (c == '\xE9') c = '\xC9';
  }
  return name;
}

// The two lists of one key, kept the obvious way beside the registry.
class Model {
 public:
  void AddSubkey(const std::string& name) { subkeys_.emplace(Upper(name), name); }
  bool RemoveSubkey(const std::string& name) { return subkeys_.erase(Upper(name)) != 0; }

  void SetValue(const std::string& name) {
    if (Find(name) == values_.end()) values_.push_back(name);
  }
  bool RemoveValue(const std::string& name) {
    auto found = Find(name);
    if (found == values_.end()) return false;
    values_.erase(found);
    return true;
  }

  std::optional<std::string> SubkeyAt(std::size_t index) const {
    if (index >= subkeys_.size()) return std::nullopt;
    return std::next(subkeys_.begin(), static_cast<std::ptrdiff_t>(index))->second;
  }
  std::optional<std::string> ValueAt(std::size_t index) const {
    return index < values_.size() ? std::optional(values_[index]) : std::nullopt;
  }

 private:
  std::vector<std::string>::iterator Find(const std::string& name) {
    return std::find_if(values_.begin(), values_.end(),
                        [&](const auto& value) { return Upper(value) == Upper(name); });
  }

  std::map<std::string, std::string, std::less<>> subkeys_;
  std::vector<std::string> values_;
};

// One random story: a small pool of names, a few handles, changes and steps in any order.
class Story {
 public:
  Story(unsigned seed, std::size_t pool) : random_(seed), pool_(pool) {
    key_ = Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\X");
    for (auto& walker : walkers_) walker.handle = Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\X");
  }

  void Run(int events) {
    for (int event = 0; event < events && !::testing::Test::HasFailure(); ++event) {
      unsigned kind = Below(100);
      if (kind < 40) {
        Change();
      } else if (kind < 41) {
        for (unsigned changes = 50 + Below(100); changes > 0; --changes) Change();
      } else {
        Walk(walkers_[Below(walkers_.size())]);
      }
    }
  }

 private:
  struct Walker {
    Key handle;
    DWORD next[2] = {};  // subkeys, values
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
    bool there;
    switch (Below(4)) {
      case 0:
        model_.AddSubkey(name);
        EXPECT_EQ(TryCreate(key_, name), 0);
        break;
      case 1:
        there = model_.RemoveSubkey(name);
        EXPECT_EQ(RegDeleteKeyA(key_, name.c_str()), there ? 0 : 2);
        break;
      case 2:
        model_.SetValue(name);
        EXPECT_EQ(Set(key_, name, name), 0);
        break;
      default:
        there = model_.RemoveValue(name);
        EXPECT_EQ(RegDeleteValueA(key_, name.c_str()), there ? 0 : 2);
    }
  }

  void Walk(Walker& walker) {
    bool values = Below(2) == 1;
    DWORD& index = walker.next[values];
    switch (Below(8)) {
      case 0: index = Below(pool_ + 2); break;
      case 1: index = 0; break;
      case 2: index -= index > 0 ? 1 : 0; break;
      case 3: break;
      default: ++index;
    }
    auto expected = values ? model_.ValueAt(index) : model_.SubkeyAt(index);
    EXPECT_EQ(values ? ValueName(walker.handle, index) : SubkeyName(walker.handle, index), expected) << index;
    if (!expected && Below(2) == 0) index = 0;
  }

  std::mt19937 random_;
  std::size_t pool_;
  Key key_;
  std::array<Walker, 3> walkers_;
  Model model_;
};

class RegistryEnumeration : public RegistryTest {};

TEST_F(RegistryEnumeration, StepsAnswerWhatTheListHoldsAtThatMoment) {
  unsigned seed = 0;
  for (std::size_t pool : {1u, 2u, 3u, 5u, 12u, 40u}) {
    for (int round = 0; round < 4; ++round) {
      SCOPED_TRACE("seed " + std::to_string(++seed) + " pool " + std::to_string(pool));
      ::setenv("MOXEL_REGISTRY", (folder() / std::to_string(seed)).c_str(), 1);
      Story(seed, pool).Run(600);
      if (HasFailure()) return;
    }
  }
}

TEST_F(RegistryEnumeration, DeletingTheFirstUntilNoneIsLeftMeetsEachOnce) {
  Key key = Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\X");
  for (int i = 0; i < 150; ++i) {
    ASSERT_EQ(TryCreate(key, "k" + std::to_string(i)), 0);
    ASSERT_EQ(Set(key, "v" + std::to_string(i), "1"), 0);
  }
  int subkeys = 0, values = 0;
  for (; auto name = SubkeyName(key, 0); ++subkeys) ASSERT_EQ(RegDeleteKeyA(key, name->c_str()), 0);
  for (; auto name = ValueName(key, 0); ++values) ASSERT_EQ(RegDeleteValueA(key, name->c_str()), 0);
  EXPECT_EQ(subkeys, 150);
  EXPECT_EQ(values, 150);
}

TEST_F(RegistryEnumeration, AWalkIsNotMisledByAKeyOrAFileThatTookAnothersPlace) {
  auto fill = [](HKEY base, std::vector<std::string> names) {
    for (const auto& name : names) ASSERT_EQ(TryCreate(base, name), 0);
  };
  fill(HKEY_CLASSES_ROOT, {"A", "B", "C"});
  ASSERT_EQ(SubkeyName(HKEY_CLASSES_ROOT, 2), "C");
  for (const char* name : {"A", "B", "C"}) ASSERT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, name), 0);
  ASSERT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes"), 0);
  fill(HKEY_CLASSES_ROOT, {"X", "Y", "Z"});
  EXPECT_EQ(SubkeyName(HKEY_CLASSES_ROOT, 3), std::nullopt);
  EXPECT_EQ(SubkeyName(HKEY_CLASSES_ROOT, 1), "Y");

  ASSERT_EQ(SubkeyName(HKEY_LOCAL_MACHINE, 0), "SOFTWARE");
  ::setenv("MOXEL_REGISTRY", (folder() / "other.db").c_str(), 1);
  fill(HKEY_LOCAL_MACHINE, {"T", "U", "V"});
  EXPECT_EQ(SubkeyName(HKEY_LOCAL_MACHINE, 1), "U");
  EXPECT_EQ(NamesOf(HKEY_LOCAL_MACHINE, SubkeyName), (std::vector<std::string>{"T", "U", "V"}));
}

struct CostCase {
  const char* name;
  bool values;
  bool changing;
};

class RegistryEnumerationCost : public RegistryTest, public ::testing::WithParamInterface<CostCase> {
 protected:
  // Microseconds a step of a walk over n entries; with changes, through another handle, one between every
  // two. All in one transaction, so that the disk has no part in it.
  double CostOfAStep(DWORD n) {
    Key key = Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\N" + std::to_string(n));
    EXPECT_EQ(RegFileBegin(), 0);
    for (DWORD i = 0; i < n; ++i) Add(key, "n" + std::to_string(i));
    Key walker = Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\N" + std::to_string(n));
    DWORD met = 0;
    auto start = std::chrono::steady_clock::now();
    // A subkey added lies before the walker, a value behind it.
    for (DWORD index = 0; NameAtIndex(walker, index); ++index, ++met)
      if (GetParam().changing) index % 2 == 0 ? Add(key, "a") : Remove(key, "a");
    std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(RegFileCommit(), 0);
    EXPECT_GE(met, n - 1);
    EXPECT_LE(met, n + 1);
    return taken.count() / n;
  }

 private:
  std::optional<std::string> NameAtIndex(HKEY key, DWORD index) {
    return GetParam().values ? ValueName(key, index) : SubkeyName(key, index);
  }
  void Add(HKEY key, const std::string& name) {
    EXPECT_EQ(GetParam().values ? Set(key, name, "1") : TryCreate(key, name), 0);
  }
  void Remove(HKEY key, const std::string& name) {
    EXPECT_EQ(GetParam().values ? RegDeleteValueA(key, name.c_str()) : RegDeleteKeyA(key, name.c_str()), 0);
  }
};

TEST_P(RegistryEnumerationCost, OfAStepDoesNotGrowWithTheList) {
  CostOfAStep(100);
  double few = CostOfAStep(2000);
  double many = CostOfAStep(20000);
  EXPECT_LT(many, 3 * few);
}

INSTANTIATE_TEST_SUITE_P(Lists, RegistryEnumerationCost,
                         ::testing::Values(CostCase{"SubkeysQuiet", false, false},
                                           CostCase{"SubkeysChanging", false, true},
                                           CostCase{"ValuesQuiet", true, false},
                                           CostCase{"ValuesChanging", true, true}),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace moxel::test
