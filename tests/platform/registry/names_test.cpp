// Names and data made of every byte, letter case, and the limits of names and depth.
#include <algorithm>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

class RegistryNames : public RegistryTest {
 protected:
  Key key_ = Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\X");
};

TEST_F(RegistryNames, EveryByteSurvivesInNamesAndData) {
  for (int code = 1; code < 256; ++code) {
    const std::string text{'<', static_cast<char>(code), '>'};
    Key scratch = Create(key_, "scratch");
    if (code != '\\') {
      ASSERT_EQ(TryCreate(scratch, text), 0) << code;
      EXPECT_EQ(SubkeyName(scratch, 0), text) << code;
      EXPECT_EQ(TryOpen(scratch, text), 0) << code;
      EXPECT_EQ(RegDeleteKeyA(scratch, text.c_str()), 0) << code;
    }
    ASSERT_EQ(Set(scratch, text, text, REG_SZ), 0) << code;
    EXPECT_EQ(ValueName(scratch, 0), text) << code;
    EXPECT_EQ(Get(scratch, text), text + '\0') << code;
    ASSERT_EQ(RegDeleteKeyA(key_, "scratch"), 0);
  }
  std::string all(256, '\0');
  for (int code = 0; code < 256; ++code) all[static_cast<std::size_t>(code)] = static_cast<char>(code);
  for (DWORD type : {REG_BINARY, REG_MULTI_SZ, REG_DWORD}) {
    ASSERT_EQ(Set(key_, "all", all, type), 0);
    EXPECT_EQ(Get(key_, "all"), all);
  }
}

// Exactly the letters have another case: a to z, the accented ones and the four outside the row of accents.
TEST_F(RegistryNames, OnlyTheCaseOfLettersIsIgnored) {
  std::vector<std::pair<int, int>> pairs{{0x9A, 0x8A}, {0x9C, 0x8C}, {0x9E, 0x8E}, {0xFF, 0x9F}};
  for (int lower = 'a'; lower <= 'z'; ++lower) pairs.emplace_back(lower, lower - 0x20);
  for (int lower = 0xE0; lower <= 0xFE; ++lower)
    if (lower != 0xF7) pairs.emplace_back(lower, lower - 0x20);
  for (auto [lower, upper] : pairs) {
    std::string small{'k', static_cast<char>(lower)}, big{'K', static_cast<char>(upper)};
    ASSERT_EQ(Set(Create(key_, small), small, "1"), 0);
    EXPECT_EQ(Get(Open(key_, big), big), "1") << lower;
    EXPECT_EQ(Set(Create(key_, big), big, "2"), 0);
    EXPECT_EQ(NamesOf(Open(key_, big), ValueName), std::vector<std::string>{small})
        << "the first spelling stays";
  }
  EXPECT_EQ(NamesOf(key_, SubkeyName).size(), pairs.size());

  Key distinct = Create(key_, "distinct");
  std::size_t folded = 0;
  for (int code = 1; code < 256; ++code) {
    if (code == '\\') continue;
    bool lower = std::any_of(pairs.begin(), pairs.end(), [&](auto& pair) { return pair.first == code; });
    if (!lower) ++folded;
    ASSERT_EQ(TryCreate(distinct, std::string(1, static_cast<char>(code))), 0);
  }
  EXPECT_EQ(NamesOf(distinct, SubkeyName).size(), folded);
}

TEST_F(RegistryNames, NamesAreAsLongAsAllowedAndNoLonger) {
  for (char c : {'k', '\xE9', '\x80'}) {  // one, two and three bytes each in the file
    const std::string longest(255, c);
    EXPECT_EQ(TryCreate(key_, longest + "\\" + longest), 0);
    EXPECT_EQ(TryOpen(key_, longest + "\\" + longest), 0);
    EXPECT_EQ(SubkeyName(Open(key_, longest), 0), longest);
    EXPECT_EQ(TryCreate(key_, longest + c), 87);
    EXPECT_EQ(TryCreate(key_, "fresh\\" + longest + c), 87);
    const std::string value(16383, c);
    EXPECT_EQ(Set(key_, value, "1"), 0);
    EXPECT_EQ(Get(key_, value), "1");
    EXPECT_EQ(RegDeleteValueA(key_, value.c_str()), 0);
    EXPECT_EQ(Set(key_, value + c, "1"), 87);
  }
  EXPECT_EQ(TryOpen(key_, "fresh"), 2) << "a refused path leaves nothing behind";
}

TEST_F(RegistryNames, DepthHasALimit) {
  std::string path = "a";
  for (int level = 2; level <= 512; ++level) path += "\\a";
  EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, path), 0);
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, path), 0);
  EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, path + "\\a"), 87);
  EXPECT_EQ(TryCreate(Open(HKEY_LOCAL_MACHINE, path), "a"), 87);
  EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, "b\\" + path), 87);
  EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "b"), 2);
}

TEST_F(RegistryNames, LargeValuesComeBackWhole) {
  std::string large(8 << 20, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 2654435761u >> 24);
  ASSERT_EQ(Set(key_, "large", large), 0);
  std::string back(large.size(), '\0');
  auto size = static_cast<DWORD>(back.size());
  EXPECT_EQ(RegQueryValueExA(key_, "large", nullptr, nullptr, reinterpret_cast<BYTE*>(back.data()), &size),
            0);
  EXPECT_TRUE(back == large);
}

}  // namespace
}  // namespace moxel::test
