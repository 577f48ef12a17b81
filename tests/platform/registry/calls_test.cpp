// What every call answers: paths, names, buffers, types, rights and deletions.
#include <algorithm>
#include <numeric>
#include <set>
#include <tuple>

#include "tests/support/registry_access.h"

namespace moxel::test {
namespace {

using RegistryCalls = RegistryKeyTest;

TEST_F(RegistryCalls, PathsNameTheSameKeyHoweverTheyAreWritten) {
  ASSERT_EQ(Set(key_, "v", "here"), 0);
  const std::pair<const char*, LSTATUS> cases[] = {
      {"SOFTWARE\\X", 0}, {"SOFTWARE\\X\\", 0}, {"SOFTWARE\\\\X", 0},   {"SOFTWARE\\X\\\\", 0},
      {"software\\x", 0}, {"SOFTWARE\\Y", 2},   {"SOFTWARE\\X\\Y", 2},  {"Y\\X", 2},
      {"SOFTWARE/X", 2},  {"SOFTWARE\\X ", 2},  {"\\SOFTWARE\\X", 161}, {"\\", 161}};
  for (auto [path, answer] : cases) {
    Key key = Open(kRoot, path);
    EXPECT_EQ(key.answer, answer) << path;
    EXPECT_EQ(key.handle == 0, answer != 0) << path;
    EXPECT_EQ(Get(key, "v").value_or("none"), answer == 0 ? "here" : "none") << path;
  }
  EXPECT_EQ(Text({Create(kRoot, "\\SOFTWARE").answer, RegDeleteKeyA(kRoot, "\\SOFTWARE\\X")}), "161 161 ");
  for (HKEY base : {HKEY{key_}, kRoot}) {
    Key again = Open(base, "", KEY_ALL_ACCESS);
    EXPECT_NE(HKEY{again}, base);
    EXPECT_EQ(Set(again, "v", "seen"), 0);
    EXPECT_EQ(Get(base, "v"), "seen");
  }
  DWORD made[2] = {};
  EXPECT_EQ(Create(key_, "A\\\\B\\", KEY_READ, &made[0]).answer, 0);
  EXPECT_EQ(Create(key_, "a\\b", KEY_READ, &made[1]).answer, 0);
  EXPECT_EQ(Text({made, made + 2}), "1 2 ");
}

TEST_F(RegistryCalls, MissingArgumentsAndDeadHandlesAreReported) {
  char name[8];
  DWORD length = sizeof name;
  EXPECT_EQ(RegOpenKeyExA(key_, "", 0, KEY_READ, nullptr), 87);
  EXPECT_EQ(RegCreateKeyExA(key_, "N", 0, nullptr, 0, KEY_READ, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(Open(key_, "N").answer, 2);
  EXPECT_EQ(RegEnumKeyExA(key_, 0, nullptr, &length, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegEnumKeyExA(key_, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegEnumValueA(key_, 0, nullptr, &length, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegEnumValueA(key_, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr), 87);
  EXPECT_EQ(RegDeleteKeyA(key_, nullptr), 87);
  EXPECT_EQ(RegSetValueExA(key_, "v", 0, REG_SZ, nullptr, 1), 998);
  for (HKEY bad : {HKEY{0}, Open(key_, "").handle, HKEY{0x7FFFFFF0}, HKEY{0x80000001}}) {
    EXPECT_EQ(AllCalls(bad), Answers(9, 6));
    EXPECT_EQ(RegCloseKey(bad), 6);
  }
  EXPECT_EQ(Text({RegCloseKey(kRoot), Open(kRoot, "SOFTWARE").answer}), "0 0 ");
}

TEST_F(RegistryCalls, OnlyTextGetsATerminatorAndOnlyWhereItLacksOne) {
  using namespace std::string_view_literals;
  std::string all(65536, '\0');
  std::iota(all.begin(), all.end(), '\0');
  const std::tuple<DWORD, std::string_view, std::string_view> cases[] = {
      {1, "abc"sv, "abc\0"sv}, {1, "abc\0"sv, "abc\0"sv},       {1, "\0"sv, "\0"sv},
      {1, ""sv, ""sv},         {1, "a\0b"sv, "a\0b\0"sv},       {1, "a\0"sv, "a\0"sv},
      {3, all, all},           {4, "8 bytes."sv, "8 bytes."sv}, {4711, "xyz"sv, "xyz"sv}};
  for (auto [given_type, given, stored] : cases) {
    for (const char* name : {"v", "", "\\"}) {
      ASSERT_EQ(Set(key_, name, given, given_type), 0);
      DWORD type = 99, size = 99;
      LSTATUS answer = RegQueryValueExA(key_, name, nullptr, &type, nullptr, &size);
      EXPECT_EQ(Answers({answer, type, size}), Answers({0, given_type, std::ssize(stored)}));
      EXPECT_EQ(Get(key_, name), stored);
    }
  }
  EXPECT_EQ(RegSetValueExA(key_, "v", 0, REG_SZ, nullptr, 0), 0);
  EXPECT_EQ(Get(key_, "v"), "");
  EXPECT_EQ(Text({RegDeleteValueA(key_, nullptr), Query(key_, ""), Remove(kValues, key_, "none")}), "0 2 2 ");
}

// A value asked for with areas of every size: nothing behind an area's end is touched, and what does not fit
// is reported with the length that would.
TEST_F(RegistryCalls, DataAreasAreNeverOverrun) {
  for (DWORD stored : {64u, 0u}) {
    ASSERT_EQ(Set(key_, "v", std::string(stored, 'd'), REG_BINARY), 0);
    for (DWORD room : {0u, 1u, 63u, 64u, 65u, 100u}) {
      for (bool enumerate : {false, true}) {
        std::string area(200, '#');
        auto* bytes = reinterpret_cast<BYTE*>(area.data());
        char name[2];
        DWORD length = 2, type = 99, size = room, written = room < stored ? 0 : stored;
        LSTATUS answer = enumerate ? RegEnumValueA(key_, 0, name, &length, nullptr, &type, bytes, &size)
                                   : RegQueryValueExA(key_, "v", nullptr, &type, bytes, &size);
        EXPECT_EQ(Answers({answer, type, size}), Answers({room < stored ? 234 : 0, REG_BINARY, stored}));
        EXPECT_EQ(area, std::string(written, 'd') + std::string(200 - written, '#'));
      }
    }
  }
  for (DWORD room : {8u, 0u}) {
    BYTE area[8];
    DWORD type = 99, size = 8;
    LSTATUS answer = RegQueryValueExA(key_, "none", nullptr, &type, room > 0 ? area : nullptr, &size);
    EXPECT_EQ(Answers({answer, type, size}), Answers({2, 0, room}));
  }
}

TEST_F(RegistryCalls, EveryValueIsFoundHoweverManyAndLargeTheKeysValuesAre) {
  for (const int count : {1, 2, 31, 32, 33, 50})
    for (const std::size_t size : {3u, 2048u, 2049u, 5000u}) {
      const Key key =
          Create(kRoot, std::string(kPath) + "\\" + std::to_string(count * 10000) + std::to_string(size));
      auto data = [&](int i) { return std::string(i == count / 2 ? size : 2, static_cast<char>('A' + i)); };
      for (int i = 0; i < count; ++i) ASSERT_EQ(Set(key, std::to_string(i), data(i)), 0);
      for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < count; ++i) EXPECT_EQ(Get(key, std::to_string(i)), data(i));
        EXPECT_EQ(Get(key, "none"), std::nullopt);
      }
      EXPECT_EQ(Text({Set(key, "0", "changed"), Remove(kValues, key, std::to_string(count - 1))}), "0 0 ");
      EXPECT_EQ(Get(key, "0"), count == 1 ? std::nullopt : std::optional<std::string>("changed"));
      EXPECT_EQ(Get(key, std::to_string(count - 1)), std::nullopt);
    }
}

TEST_F(RegistryCalls, NameBuffersAreNeverOverrun) {
  ASSERT_EQ(Create(key_, "twelve chars").answer + Set(key_, "twelve chars", ""), 0);
  for (DWORD index : {0u, 1u, 0xFFFFFFFFu}) {
    for (DWORD room : {0u, 1u, 12u, 13u, 14u}) {
      std::string key(40, '#'), value(40, '#'), kind(2, '#');
      DWORD length = room, length_too = room, type = 99, one = 1;
      Answers answers{
          RegEnumKeyExA(key_, index, key.data(), &length, nullptr, kind.data(), &one, nullptr),
          RegEnumValueA(key_, index, value.data(), &length_too, nullptr, &type, nullptr, nullptr)};
      EXPECT_EQ(answers, Answers(2, index > 0 ? 259 : room < 13 ? 234 : 0));
      const bool found = answers[0] == 0;
      for (const std::string& name : {key, value}) {
        EXPECT_EQ(name.starts_with(std::string("twelve chars\0", 13)), found);
        EXPECT_EQ(name.substr(room), std::string(40 - room, '#'));
      }
      EXPECT_EQ(kind == std::string("\0#", 2), found);
      EXPECT_EQ(type == 99, index > 0);
      EXPECT_EQ(length == 12 && length_too == 12, found || room == 12);
    }
  }
}

TEST_F(RegistryCalls, SubkeysComeInOrderOfTheirUpperCasedNamesAndValuesInOrderOfTheirFirstSetting) {
  for (const char* name : {"S2", "\xE9", "B1", "_x", "A", "Z", "b", "S10", "a2", "z"})
    ASSERT_EQ(Text({Create(key_, std::string(name) + "\\below").answer, Set(key_, name, "1")}), "0 0 ");
  EXPECT_EQ(Names(kSubkeys, key_), "A,a2,b,B1,S10,S2,Z,_x,\xE9,");
  ASSERT_EQ(Text({Remove(kValues, key_, "b1"), Set(key_, "B1", "2"), Set(key_, "s2", "2")}), "0 0 0 ");
  EXPECT_EQ(Names(kValues, key_), "S2,\xE9,_x,A,Z,b,S10,a2,B1,");
}

// Exactly the letters have another case: a to z, the accented ones and the four outside the row of accents.
// Names that differ in more come back as they were spelt, whatever their bytes.
TEST_F(RegistryCalls, OnlyTheCaseOfLettersIsIgnored) {
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

TEST_F(RegistryCalls, NamesAndPathsAreAsLongAsAllowedAndNoLonger) {
  for (char c : {'k', '\xE9', '\x80'}) {  // one, two and three bytes each in the file
    const std::string longest(255, c), value(16383, c);
    EXPECT_EQ(Text({Create(key_, longest + "\\" + longest).answer, Create(key_, longest + c).answer}),
              "0 87 ");
    EXPECT_EQ(Names(kSubkeys, Open(key_, longest)), longest + ",");
    EXPECT_EQ(Text({Set(key_, value, "1"), Set(key_, value + c, "1")}), "0 87 ");
    EXPECT_EQ(Names(kValues, key_), value + ",");
    EXPECT_EQ(Remove(kValues, key_, value), 0);
  }
  std::string path = "a";
  for (int level = 2; level <= 512; ++level) path += "\\a";
  EXPECT_EQ(Text({Create(kRoot, path).answer, Create(kRoot, path + "\\a").answer}), "0 87 ");
  EXPECT_EQ(Create(Open(kRoot, path), "a").answer, 87);
  for (const std::string& refused : {path, std::string(256, 'x')})
    EXPECT_EQ(Text({Create(kRoot, "b\\" + refused).answer, Open(kRoot, "b").answer}), "87 2 ")
        << "nothing is left";
}

// Queries and steps through values, steps through subkeys, sets and deletes a value; keys are opened, created
// and deleted whatever the rights on their parent.
TEST_F(RegistryCalls, RightsAreThoseTheHandleWasOpenedWith) {
  const std::pair<std::vector<REGSAM>, const char*> cases[] = {
      {{0, KEY_CREATE_SUB_KEY}, "5 5 5 5 5 "},
      {{KEY_QUERY_VALUE}, "0 0 5 5 5 "},
      {{KEY_ENUMERATE_SUB_KEYS}, "5 5 0 5 5 "},
      {{KEY_READ, GENERIC_READ}, "0 0 0 5 5 "},
      {{KEY_SET_VALUE, KEY_WRITE, GENERIC_WRITE}, "5 5 5 0 0 "},
      {{KEY_ALL_ACCESS, GENERIC_ALL, MAXIMUM_ALLOWED}, "0 0 0 0 0 "},
  };
  ASSERT_EQ(Create(key_, "child").answer, 0);
  for (const auto& [rights, answers] : cases)
    for (REGSAM access : rights) {
      ASSERT_EQ(Set(key_, "v", "1"), 0);
      Key key = Open(kRoot, kPath, access);
      Answers read{Query(key, "v"), Step(kValues, key, 0), Step(kSubkeys, key, 0)};
      Answers written{Set(key, "v", "2"), Remove(kValues, key, "v")};
      EXPECT_EQ(Text(read) + Text(written), answers) << access;
      Answers keys{Open(key, "child").answer, Create(key, "new").answer, Remove(kSubkeys, key, "new")};
      EXPECT_EQ(Text(keys), "0 0 0 ") << access;
    }
}

TEST_F(RegistryCalls, OnlyKeysWithoutSubkeysCanBeDeleted) {
  ASSERT_EQ(Create(key_, "A\\B\\C").answer, 0);
  Key a = Open(key_, "A", KEY_ENUMERATE_SUB_KEYS);
  const std::tuple<HKEY, const char*, LSTATUS> cases[] = {
      {key_, "A", 5}, {key_, "A\\B", 5},   {a, "", 5}, {key_, "N", 2}, {key_, "N\\C", 2}, {a, "b\\c\\", 0},
      {a, "B\\C", 2}, {key_, "a\\\\B", 0}, {a, "", 0}, {a, "", 1018},  {key_, "A", 2},    {kRoot, "", 5}};
  for (auto [base, path, answer] : cases) EXPECT_EQ(RegDeleteKeyA(base, path), answer) << path;
}

TEST_F(RegistryCalls, AHandleOfADeletedKeyStaysDeadWhenTheKeyComesBack) {
  Key dead = Create(key_, "K");
  ASSERT_EQ(Text({Set(dead, "v", "old"), RegDeleteKeyA(key_, "k")}), "0 0 ");
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(AllCalls(dead), Answers(9, 1018));
    EXPECT_EQ(Text({Create(dead, "").answer, RegDeleteKeyA(dead, "")}), "1018 1018 ");
    EXPECT_EQ(Create(key_, "K\\below").answer, 0);
  }
  Key alive = Open(key_, "K");
  EXPECT_EQ(Names(kSubkeys, alive) + Names(kValues, alive), "below,");
}

}  // namespace
}  // namespace moxel::test
