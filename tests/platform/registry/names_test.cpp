// Names and data made of every byte, letter case, and the limits of names, depth and data.
#include <map>

#include "registry_helpers.h"

namespace moxel::test {
namespace {

class RegistryNames : public RegistryKeyTest {};

TEST_F(RegistryNames, EveryByteSurvivesInNamesAndData) {
  std::string all(1, '\0');
  for (int code = 1; code < 256; ++code) {
    all += static_cast<char>(code);
    const std::string text{'<', static_cast<char>(code), '>'};
    for (List list : {kSubkeys, kValues}) {
      if (code == '\\' && list == kSubkeys) continue;
      ASSERT_EQ(Add(list, key_, text), 0) << code;
      EXPECT_EQ(Names(list, key_), text + ",") << code;
      EXPECT_EQ(list == kValues ? Get(key_, text) : (Open(key_, text).answer == 0 ? text : ""), text) << code;
      EXPECT_EQ(Remove(list, key_, text), 0) << code;
    }
  }
  for (DWORD type : {REG_BINARY, REG_MULTI_SZ, REG_DWORD, REG_SZ}) {
    ASSERT_EQ(Set(key_, "all", all, type), 0);
    EXPECT_EQ(Get(key_, "all"), type == REG_SZ ? all + '\0' : all);
  }
  std::string large(8 << 20, '\0'), back(large.size(), '#');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 2654435761u >> 24);
  ASSERT_EQ(Set(key_, "large", large), 0);
  auto size = static_cast<DWORD>(back.size());
  auto* area = reinterpret_cast<BYTE*>(back.data());
  EXPECT_EQ(RegQueryValueExA(key_, "large", nullptr, nullptr, area, &size), 0);
  EXPECT_TRUE(back == large);
}

// Exactly the letters have another case: a to z, the accented ones and the four outside the row of accents.
TEST_F(RegistryNames, OnlyTheCaseOfLettersIsIgnored) {
  auto upper_of = [](int code) {
    bool in_row = (code >= 'a' && code <= 'z') || (code >= 0xE0 && code <= 0xFE && code != 0xF7);
    if (code == 0x9A || code == 0x9C || code == 0x9E) return code - 0x10;
    return in_row ? code - 0x20 : code == 0xFF ? 0x9F : code;
  };
  std::map<int, std::string> first;  // by the upper-cased code; codes fall, so small letters come first
  std::string in_order_of_setting, sorted;
  for (int code = 255; code > 0; --code) {
    const std::string name(1, static_cast<char>(code));
    if (code == '\\') continue;
    EXPECT_EQ(Text({Create(key_, name).answer, Set(key_, name, "1")}), "0 0 ") << code;
    if (first.emplace(upper_of(code), name).second) in_order_of_setting += name + ",";
  }
  for (const auto& [code, name] : first) sorted += name + ",";
  EXPECT_EQ(Names(kValues, key_), in_order_of_setting);
  EXPECT_EQ(Names(kSubkeys, key_), sorted);
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
  EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, path).answer, 0);
  EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, path + "\\a").answer, 87);
  EXPECT_EQ(Create(Open(HKEY_LOCAL_MACHINE, path), "a").answer, 87);
  EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, "b\\" + path).answer, 87);
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, "b").answer, 2);
}

}  // namespace
}  // namespace moxel::test
