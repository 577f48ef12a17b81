// Names and data made of every byte, letter case, and the limits of names, depth and data.
#include <algorithm>
#include <numeric>
#include <set>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

using RegistryNames = RegistryKeyTest;

// Exactly the letters have another case: a to z, the accented ones and the four outside the row of accents.
// Names that differ in more come back as they were spelt, whatever their bytes.
TEST_F(RegistryNames, OnlyTheCaseOfLettersIsIgnored) {
  auto upper_of = [](int code) {
    bool in_row = (code >= 'a' && code <= 'z') || (code >= 0xE0 && code <= 0xFE && code != 0xF7);
    if (code == 0x9A || code == 0x9C || code == 0x9E) return code - 0x10;
    return in_row ? code - 0x20 : code == 0xFF ? 0x9F : code;
  };
  std::set<int> seen;
  std::string first;  // codes fall, so small letters come before their capitals
  for (int code = 255; code > 0; --code) {
    const std::string letter(1, static_cast<char>(code)), unique = std::to_string(code) + letter;
    if (code == '\\') continue;
    for (const std::string& name : {letter, unique})
      EXPECT_EQ(Text({Create(key_, name).answer, Set(key_, name, "1")}), "0 0 ") << code;
    first += (seen.insert(upper_of(code)).second ? letter + "," : "") + unique + ",";
  }
  EXPECT_EQ(Names(kValues, key_), first);
  EXPECT_TRUE(std::ranges::is_permutation(Names(kSubkeys, key_), first));
}

TEST_F(RegistryNames, EveryByteSurvivesInData) {
  std::string all(65536, '\0');
  std::iota(all.begin(), all.end(), '\0');
  for (DWORD type : {REG_BINARY, REG_MULTI_SZ, REG_DWORD, REG_SZ}) {
    ASSERT_EQ(Set(key_, "\\", all, type), 0);
    EXPECT_EQ(Get(key_, "\\"), type == REG_SZ ? all + '\0' : all);
  }
}

TEST_F(RegistryNames, NamesAndPathsAreAsLongAsAllowedAndNoLonger) {
  for (char c : {'k', '\xE9', '\x80'}) {  // one, two and three bytes each in the file
    const std::string longest(255, c), value(16383, c);
    EXPECT_EQ(Create(key_, longest + "\\" + longest).answer, 0);
    EXPECT_EQ(Names(kSubkeys, Open(key_, longest)), longest + ",");
    EXPECT_EQ(Create(key_, longest + c).answer, 87);
    EXPECT_EQ(Create(key_, "fresh\\" + longest + c).answer, 87);
    EXPECT_EQ(Set(key_, value, "1"), 0);
    EXPECT_EQ(Names(kValues, key_), value + ",");
    EXPECT_EQ(RegDeleteValueA(key_, value.c_str()), 0);
    EXPECT_EQ(Set(key_, value + c, "1"), 87);
  }
  EXPECT_EQ(Open(key_, "fresh").answer, 2) << "a refused path leaves nothing behind";

  std::string path = "a";
  for (int level = 2; level <= 512; ++level) path += "\\a";
  EXPECT_EQ(Create(kRoot, path).answer, 0);
  EXPECT_EQ(Create(kRoot, path + "\\a").answer, 87);
  EXPECT_EQ(Create(Open(kRoot, path), "a").answer, 87);
  EXPECT_EQ(Create(kRoot, "b\\" + path).answer, 87);
  EXPECT_EQ(Open(kRoot, "b").answer, 2);
}

}  // namespace
}  // namespace moxel::test
